// CharScan.h: reads text one character at a time in the encodings callers
// use (UTF-8 and the double-byte GBK and BIG5), telling well-formed
// characters from malformed bytes, and sorts the Unicode characters that GBK
// lacks into the few kinds the analysis can tell apart.
//
// The readers never look past the `len` bytes they are given, so they are
// safe on text cut anywhere, and every call consumes at least one byte, so a
// loop over them always ends.
#ifndef ZIVOR_UTILITY_CHARSCAN_H_
#define ZIVOR_UTILITY_CHARSCAN_H_

#include <cstddef>
#include <cstdint>

// The byte layouts a text can be read in.
enum class TextLayout {
  kUtf8,
  kGbk,   // lead 0x81-0xFE, trail 0x40-0x7E or 0x80-0xFE
  kBig5,  // lead 0x81-0xFE, trail 0x40-0x7E or 0xA1-0xFE
};

struct ScannedChar {
  enum Kind : uint8_t {
    kAscii,      // one byte below 0x80
    kMultiByte,  // a well-formed character of two or more bytes
    kMalformed,  // bytes that form no character of the layout
  };
  Kind kind;
  int len;        // bytes consumed, at least 1
  uint32_t code;  // Unicode code point (UTF-8), lead * 256 + trail (GBK,
                  // BIG5) or the byte (ASCII, malformed)
};

// Reads the character at s[0] of a text with `len` (> 0) bytes left. A
// malformed UTF-8 sequence is consumed as its longest well-formed prefix (at
// least one byte), the way Unicode recommends replacing it.
inline ScannedChar ScanChar(TextLayout layout, const char* s, size_t len);

// The length of the character that `lead` begins (1 for ASCII and for a
// byte that begins none), and whether `byte` can continue a character.
int CharLengthFromLead(TextLayout layout, unsigned char lead);
bool IsTrailByte(TextLayout layout, unsigned char byte);

// The characters of the `len` bytes at s, a malformed piece counting as one.
size_t CountChars(TextLayout layout, const char* s, size_t len);

// Whether the `len` bytes at s are well-formed in the layout.
bool IsWellFormed(TextLayout layout, const char* s, size_t len);

// What a character that GBK lacks is to the analysis.
enum class ForeignKind {
  kSpace,     // white space (no-break space, the typographic spaces)
  kExtender,  // attaches to the character before it: combining marks,
              // variation selectors, the zero-width joiner, emoji modifiers
  kHan,       // a Chinese character (the extension blocks), kana
  kLetter,    // a letter of another script: Hangul, accented Latin, Arabic...
  kSymbol,    // anything else: emoji, dingbats, symbols, controls, unassigned
};
ForeignKind ClassifyCodePoint(uint32_t code);

// --- Implementation of the readers, inline since they run once a character.

namespace charscan_detail {

inline bool InRange(unsigned char c, unsigned char lo, unsigned char hi) {
  return c >= lo && c <= hi;
}

// The range of the first continuation byte after a UTF-8 lead byte (the
// later ones are always 0x80-0xBF), and the sequence length; 0 for a byte
// that cannot lead a sequence.
struct Utf8Lead {
  int length;
  unsigned char lo;
  unsigned char hi;
};

inline Utf8Lead LeadOf(unsigned char c) {
  if (InRange(c, 0xC2, 0xDF)) return {2, 0x80, 0xBF};
  if (c == 0xE0) return {3, 0xA0, 0xBF};
  if (c == 0xED) return {3, 0x80, 0x9F};  // no surrogates
  if (InRange(c, 0xE1, 0xEF)) return {3, 0x80, 0xBF};
  if (c == 0xF0) return {4, 0x90, 0xBF};
  if (c == 0xF4) return {4, 0x80, 0x8F};  // nothing above U+10FFFF
  if (InRange(c, 0xF1, 0xF3)) return {4, 0x80, 0xBF};
  return {0, 0, 0};
}

inline ScannedChar ScanUtf8(const unsigned char* s, size_t len) {
  const Utf8Lead lead = LeadOf(s[0]);
  if (lead.length == 0) return {ScannedChar::kMalformed, 1, s[0]};
  uint32_t code = s[0] & (0xFF >> (lead.length + 1));
  for (int i = 1; i < lead.length; ++i) {
    const unsigned char lo = i == 1 ? lead.lo : 0x80;
    const unsigned char hi = i == 1 ? lead.hi : 0xBF;
    if (static_cast<size_t>(i) >= len || !InRange(s[i], lo, hi)) {
      return {ScannedChar::kMalformed, i, s[0]};
    }
    code = (code << 6) | (s[i] & 0x3F);
  }
  return {ScannedChar::kMultiByte, lead.length, code};
}

inline ScannedChar ScanDoubleByte(const unsigned char* s, size_t len, bool big5) {
  const unsigned char lead = s[0];
  if (!InRange(lead, 0x81, 0xFE) || len < 2) return {ScannedChar::kMalformed, 1, lead};
  const unsigned char trail = s[1];
  const bool valid = InRange(trail, 0x40, 0x7E) ||
                     (big5 ? InRange(trail, 0xA1, 0xFE) : InRange(trail, 0x80, 0xFE));
  if (!valid) return {ScannedChar::kMalformed, 1, lead};
  return {ScannedChar::kMultiByte, 2, static_cast<uint32_t>(lead * 256 + trail)};
}

}  // namespace charscan_detail

inline ScannedChar ScanChar(TextLayout layout, const char* text, size_t len) {
  const auto* s = reinterpret_cast<const unsigned char*>(text);
  if (s[0] < 0x80) return {ScannedChar::kAscii, 1, s[0]};
  switch (layout) {
    case TextLayout::kUtf8:
      return charscan_detail::ScanUtf8(s, len);
    case TextLayout::kGbk:
      return charscan_detail::ScanDoubleByte(s, len, false);
    case TextLayout::kBig5:
      return charscan_detail::ScanDoubleByte(s, len, true);
  }
  return {ScannedChar::kMalformed, 1, s[0]};
}

#endif  // ZIVOR_UTILITY_CHARSCAN_H_
