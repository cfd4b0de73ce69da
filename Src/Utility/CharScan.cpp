#include "Utility/CharScan.h"

#include <algorithm>
#include <iterator>

namespace {

using charscan_detail::InRange;
using charscan_detail::LeadOf;

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

int CharLengthFromLead(TextLayout layout, unsigned char lead) {
  if (lead < 0x80) return 1;
  if (layout == TextLayout::kUtf8) return std::max(LeadOf(lead).length, 1);
  return InRange(lead, 0x81, 0xFE) ? 2 : 1;
}

bool IsTrailByte(TextLayout layout, unsigned char byte) {
  return layout == TextLayout::kUtf8 ? InRange(byte, 0x80, 0xBF) : byte >= 0x40;
}

size_t CountChars(TextLayout layout, const char* s, size_t len) {
  size_t count = 0;
  for (size_t pos = 0; pos < len; ++count) pos += static_cast<size_t>(ScanChar(layout, s + pos, len - pos).len);
  return count;
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
