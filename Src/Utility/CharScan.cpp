#include "Utility/CharScan.h"

#include <algorithm>
#include <iterator>

namespace {

bool InRange(unsigned char c, unsigned char lo, unsigned char hi) { return c >= lo && c <= hi; }

// The range of the first continuation byte after a UTF-8 lead byte (the
// later ones are always 0x80-0xBF), and the sequence length; 0 for a byte
// that cannot lead a sequence.
struct Utf8Lead {
  int length;
  unsigned char lo;
  unsigned char hi;
};

Utf8Lead LeadOf(unsigned char c) {
  if (InRange(c, 0xC2, 0xDF)) return {2, 0x80, 0xBF};
  if (c == 0xE0) return {3, 0xA0, 0xBF};
  if (c == 0xED) return {3, 0x80, 0x9F};  // no surrogates
  if (InRange(c, 0xE1, 0xEF)) return {3, 0x80, 0xBF};
  if (c == 0xF0) return {4, 0x90, 0xBF};
  if (c == 0xF4) return {4, 0x80, 0x8F};  // nothing above U+10FFFF
  if (InRange(c, 0xF1, 0xF3)) return {4, 0x80, 0xBF};
  return {0, 0, 0};
}

ScannedChar ScanUtf8(const unsigned char* s, size_t len) {
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

ScannedChar ScanDoubleByte(const unsigned char* s, size_t len, bool big5) {
  const unsigned char lead = s[0];
  if (!InRange(lead, 0x81, 0xFE) || len < 2) return {ScannedChar::kMalformed, 1, lead};
  const unsigned char trail = s[1];
  const bool valid = InRange(trail, 0x40, 0x7E) ||
                     (big5 ? InRange(trail, 0xA1, 0xFE) : InRange(trail, 0x80, 0xFE));
  if (!valid) return {ScannedChar::kMalformed, 1, lead};
  return {ScannedChar::kMultiByte, 2, static_cast<uint32_t>(lead * 256 + trail)};
}

struct CodeRange {
  uint32_t first;
  uint32_t last;
  ForeignKind kind;
};

// Blocks by what they are to the analysis, in ascending order; code points
// in no block are symbols. Only characters GBK lacks are ever classified, so
// a block that GBK covers in part (Greek, Cyrillic, kana) is listed whole.
constexpr CodeRange kBlocks[] = {
    {0x0085, 0x0085, ForeignKind::kSpace},      // next line
    {0x00A0, 0x00A0, ForeignKind::kSpace},      // no-break space
    {0x00C0, 0x00D6, ForeignKind::kLetter},     // Latin-1 letters, without
    {0x00D8, 0x00F6, ForeignKind::kLetter},     //   the multiplication and
    {0x00F8, 0x02FF, ForeignKind::kLetter},     //   division signs; Latin
                                                //   extended, IPA, modifiers
    {0x0300, 0x036F, ForeignKind::kExtender},   // combining diacritics
    {0x0370, 0x0482, ForeignKind::kLetter},     // Greek, Cyrillic
    {0x0483, 0x0489, ForeignKind::kExtender},   // Cyrillic combining marks
    {0x048A, 0x0FFF, ForeignKind::kLetter},     // Cyrillic to Tibetan
    {0x1000, 0x167F, ForeignKind::kLetter},     // Myanmar to Canadian syllabics
    {0x1680, 0x1680, ForeignKind::kSpace},      // Ogham space
    {0x1681, 0x18AF, ForeignKind::kLetter},     // Ogham to Mongolian
    {0x1AB0, 0x1AFF, ForeignKind::kExtender},   // combining diacritics ext.
    {0x1DC0, 0x1DFF, ForeignKind::kExtender},   // combining supplement
    {0x1E00, 0x1FFF, ForeignKind::kLetter},     // Latin ext. additional, Greek ext.
    {0x2000, 0x200A, ForeignKind::kSpace},      // typographic spaces
    {0x200C, 0x200D, ForeignKind::kExtender},   // zero-width (non-)joiner
    {0x2028, 0x2029, ForeignKind::kSpace},      // line and paragraph separators
    {0x202F, 0x202F, ForeignKind::kSpace},      // narrow no-break space
    {0x205F, 0x205F, ForeignKind::kSpace},      // medium mathematical space
    {0x20D0, 0x20FF, ForeignKind::kExtender},   // combining marks for symbols
    {0x2E80, 0x2FDF, ForeignKind::kHan},        // radicals
    {0x3040, 0x30FF, ForeignKind::kHan},        // kana
    {0x3130, 0x318F, ForeignKind::kLetter},     // Hangul compatibility jamo
    {0x31F0, 0x31FF, ForeignKind::kHan},        // katakana extension
    {0x3400, 0x4DBF, ForeignKind::kHan},        // CJK extension A
    {0x4E00, 0x9FFF, ForeignKind::kHan},        // CJK unified ideographs
    {0xA960, 0xA97F, ForeignKind::kLetter},     // Hangul jamo extension A
    {0xAC00, 0xD7FF, ForeignKind::kLetter},     // Hangul syllables, jamo ext. B
    {0xF900, 0xFAFF, ForeignKind::kHan},        // CJK compatibility ideographs
    {0xFB00, 0xFDFF, ForeignKind::kLetter},     // presentation forms
    {0xFE00, 0xFE0F, ForeignKind::kExtender},   // variation selectors
    {0xFE20, 0xFE2F, ForeignKind::kExtender},   // combining half marks
    {0xFE70, 0xFEFE, ForeignKind::kLetter},     // Arabic presentation forms B
    {0x1F3FB, 0x1F3FF, ForeignKind::kExtender}, // emoji skin-tone modifiers
    {0x20000, 0x3FFFF, ForeignKind::kHan},      // CJK extensions B and later
    {0xE0020, 0xE007F, ForeignKind::kExtender}, // tag characters
    {0xE0100, 0xE01EF, ForeignKind::kExtender}, // variation selectors supplement
};

}  // namespace

ScannedChar ScanChar(TextLayout layout, const char* text, size_t len) {
  const auto* s = reinterpret_cast<const unsigned char*>(text);
  if (s[0] < 0x80) return {ScannedChar::kAscii, 1, s[0]};
  switch (layout) {
    case TextLayout::kUtf8:
      return ScanUtf8(s, len);
    case TextLayout::kGbk:
      return ScanDoubleByte(s, len, false);
    case TextLayout::kBig5:
      return ScanDoubleByte(s, len, true);
  }
  return {ScannedChar::kMalformed, 1, s[0]};
}

int CharLengthFromLead(TextLayout layout, unsigned char lead) {
  if (lead < 0x80) return 1;
  if (layout == TextLayout::kUtf8) return std::max(LeadOf(lead).length, 1);
  return InRange(lead, 0x81, 0xFE) ? 2 : 1;
}

bool IsTrailByte(TextLayout layout, unsigned char byte) {
  return layout == TextLayout::kUtf8 ? InRange(byte, 0x80, 0xBF) : byte >= 0x40;
}

bool IsWellFormed(TextLayout layout, const char* s, size_t len) {
  for (size_t pos = 0; pos < len;) {
    const ScannedChar c = ScanChar(layout, s + pos, len - pos);
    if (c.kind == ScannedChar::kMalformed) return false;
    pos += static_cast<size_t>(c.len);
  }
  return true;
}

ForeignKind ClassifyCodePoint(uint32_t code) {
  const auto* end = std::end(kBlocks);
  const auto* block = std::upper_bound(std::begin(kBlocks), end, code,
                                       [](uint32_t c, const CodeRange& r) { return c < r.first; });
  if (block == std::begin(kBlocks)) return ForeignKind::kSymbol;
  --block;
  return code <= block->last ? block->kind : ForeignKind::kSymbol;
}
