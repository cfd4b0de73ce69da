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
ScannedChar ScanChar(TextLayout layout, const char* s, size_t len);

// The length of the character that `lead` begins (1 for ASCII and for a
// byte that begins none), and whether `byte` can continue a character.
int CharLengthFromLead(TextLayout layout, unsigned char lead);
bool IsTrailByte(TextLayout layout, unsigned char byte);

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

#endif  // ZIVOR_UTILITY_CHARSCAN_H_
