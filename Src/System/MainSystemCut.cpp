// MainSystemCut.cpp: where a long text can be cut without changing its
// analysis, so that a caller can analyse a text of any length in pieces of
// bounded size.
//
// The analysis takes a line one sentence at a time, and a sentence's words
// depend on nothing outside it. A sentence ends at white space, at a full
// stop that follows a few atoms, or where it reaches the atom scanner's
// limit; the next one starts after any blanks. Analysing the text up to the
// start of a sentence and then the rest from there gives, one after the
// other, exactly the tokens of the whole, provided that
//  - the first piece is longer than a short text (100 bytes), which the
//    analysis would take without skipping its leading blanks;
//  - the second piece starts with no blank (the line splitter of a long
//    text skips them) and, in UTF-8, with no byte-order mark (which would
//    be skipped at the start of a text but not inside one);
//  - the sentence ends before the cut were found with the characters after
//    them in sight: the cut stays a little before the end of what was given.
#include <cstring>
#include <string>

#include "Segment/PreProcess.h"
#include "System/MainSystem.h"
#include "Utility/CodeTran.h"

namespace {

// Texts up to this long are analysed as one line, without skipping blanks.
constexpr int kShortTextBytes = 100;
// Bytes kept after a cut, so that the sentence ends before it were decided
// on what follows them.
constexpr int kLookaheadBytes = 64;

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsBreak(char c) { return c == '\n' || c == '\r'; }

}  // namespace

int CMainSystem::GetSafeCut(const char* sText, int nLen) {
  Busy busy(this);
  if (sText == nullptr || nLen <= kShortTextBytes + kLookaheadBytes || m_pPreProcess == nullptr) {
    return 0;
  }
  // The text as the analysis reads it, up to a NUL, NUL-terminated.
  std::string text(sText, strnlen(sText, static_cast<size_t>(nLen)));
  if (m_pCodeTranslator != nullptr) {
    std::string gbk;
    if (!m_pCodeTranslator->ToGBK(text.data(), text.size(), &gbk, &m_vecTransOffsets)) return 0;
    text.swap(gbk);
  }
  const char* line = text.c_str();
  const int length = static_cast<int>(text.size());
  int cut = 0;
  // Sentence by sentence through the first line, as the analysis goes.
  for (int pos = 0; pos < length;) {
    while (pos < length && IsBlank(line[pos])) ++pos;
    if (pos > length - kLookaheadBytes || IsBreak(line[pos])) break;
    if (pos > kShortTextBytes && !StartsWithMark(sText, nLen, CallerOffset(pos))) cut = pos;
    const char* next = m_pPreProcess->AtomSegment(line + pos);
    if (next <= line + pos || IsBreak(next[-1])) break;
    pos = static_cast<int>(next - line);
  }
  return CallerOffset(cut);
}

int CMainSystem::CallerOffset(int nAnalysed) const {
  if (m_pCodeTranslator == nullptr || nAnalysed <= 0) return nAnalysed;
  return m_vecTransOffsets[static_cast<size_t>(nAnalysed)];
}

bool CMainSystem::StartsWithMark(const char* sText, int nLen, int nOffset) const {
  return m_pCodeTranslator != nullptr && m_pCodeTranslator->GetEncoding() == CCodeTran::kUTF8 &&
         nLen - nOffset >= 3 && memcmp(sText + nOffset, "\xEF\xBB\xBF", 3) == 0;
}
