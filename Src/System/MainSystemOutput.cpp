// MainSystemOutput.cpp: formatting of the chosen words as result text and
// result records, and the tag map level.
#include <cmath>
#include <cstring>

#include "Segment/PreProcess.h"
#include "System/MainSystem.h"
#include "Utility/POSmap.h"
#include "Utility/trie.h"

namespace {

// Tags that output gives to the words it merges.
constexpr unsigned char kNumeralTag = 18;   // 一XX
constexpr unsigned char kMentionTag = 24;   // an "@" run
constexpr unsigned char kLatinTag = 93;     // a single Latin run
constexpr unsigned char kUrlTag = 96;       // Latin runs joined by URL punctuation
constexpr unsigned char kEmailTag = 97;     // a Latin run containing "@"
constexpr unsigned char kSessionTag = 98;   // "//"
// Longest "@" run, in words.
constexpr int kMaxMentionWords = 140;
constexpr int kMapLevels = 4;

// Character types (charset.type) that the merges look at.
constexpr unsigned char kDigitRunType = CPreProcess::kDigitKindA;
constexpr unsigned char kLetterRunType = CPreProcess::kLetter;
constexpr unsigned char kWhiteSpaceType = CPreProcess::kWhiteSpace;

bool IsUnknownClass(int handle) {
  for (const int id : {gUnknown_m_ID, gUnknown_x_ID, gUnknown_nr_ID, gUnknown_ns_ID,
                       gUnknown_nt_ID, gUnknown_t_ID, gUnknown_nz_ID}) {
    if (handle == id) return true;
  }
  return false;
}

bool BeginsWithAny(const char* pLine, const word_t& word, const char* chars) {
  const char first = pLine[word.start];
  return first != '\0' && strchr(chars, first) != nullptr;
}

// Types that end an "@" run: delimiters, sentence ends, punctuation runs,
// white space and the sentence-end atom.
bool EndsMention(const char* pLine, const word_t& word) {
  if (BeginsWithAny(pLine, word, "-_")) return false;
  switch (word.type) {
    case CPreProcess::kDelimiter:
    case CPreProcess::kSentenceEnd:
    case CPreProcess::kPunctuationRun:
    case kWhiteSpaceType:
    case CPreProcess::kEndAtomType:
      return true;
    default:
      return false;
  }
}

// "一" followed by the same two-byte character twice (一个个, 一天天). Words
// of the same handle have the same text except where the handle is unknown
// (-1), so the text is compared as well.
bool IsRepeatedMeasure(const char* pLine, const word_t* pWords, int last, int i) {
  if (gOneID < 0 || pWords[i].handle != gOneID || i + 2 > last) return false;
  const word_t& first = pWords[i + 1];
  const word_t& second = pWords[i + 2];
  return first.end - first.start == 2 && static_cast<unsigned char>(pLine[first.start]) >= 0x80 &&
         second.handle == first.handle && second.end - second.start == 2 &&
         memcmp(pLine + first.start, pLine + second.start, 2) == 0;
}

// Stores a tag name in a record, cut to fit and NUL-filled.
void CopyTagName(const char* name, result_t* record) {
  memset(record->sPOS, 0, sizeof(record->sPOS));
  memcpy(record->sPOS, name, strnlen(name, sizeof(record->sPOS) - 1));
}

}  // namespace

// One token of the result: the words it takes and, for a user-dictionary
// word, the user tag.
struct CMainSystem::Token {
  int step = 1;
  bool userWord = false;
  char userTag[CTrie::kPosSize] = {};
};

int CMainSystem::Output(const char* pLine, word_t* pWords, int nWordCount, int nStartLen,
                        int bPOStagged, bool bUserDict) {
  const int level = m_nPOSmap.load(std::memory_order_relaxed);
  const bool validLevel = level >= 0 && level < kMapLevels;
  if (g_bPOSTagger && !validLevel) return 0;
  const CPOSmap* map = m_ppPOSmap != nullptr && validLevel ? m_ppPOSmap[level] : nullptr;
  const bool tagged = g_bPOSTagger && bPOStagged;
  if (pLine != nullptr && pWords != nullptr) {
    for (int i = 1; i < nWordCount - 1;) {
      i += OutputWord(pLine, pWords, nWordCount, i, nStartLen, tagged, bUserDict, map);
    }
  }
  TerminateResult();
  return m_nVecResultLen;
}

int CMainSystem::OutputWord(const char* pLine, word_t* pWords, int nWordCount, int i,
                            int nStartLen, bool bTagged, bool bUserDict,
                            const CPOSmap* pMap) {
  word_t& word = pWords[i];
  // A call that wants text only fills a record on the stack, which the tag
  // and user-word steps write as they would a kept one, and skips its weight.
  result_t scratch;
  result_t* record = m_bKeepLineRecords
                         ? AppendRecord(&m_pVecResult, &m_nVecResultLen, &m_nVecResultMemSize)
                         : ClearRecord(&scratch);
  if (record == nullptr) return nWordCount;  // out of memory: the segment ends here
  record->word_ID = word.handle;
  if (m_bKeepLineRecords) record->weight = -std::log(GetUniProb(word.handle));
  record->word_type = word.type == kMergedWordType ? 2 : 0;

  Token token;
  if (bUserDict && m_pUserDict != nullptr) {
    MatchUserWord(pLine, pWords, nWordCount, i, bTagged, pMap, &token, record);
  }
  if (!token.userWord) MergePatterns(pLine, pWords, nWordCount, i, bTagged, &token);

  const int length = pWords[i + token.step].start - word.start;
  NoteSpan(nStartLen + word.start, length, static_cast<size_t>(m_nResultLen));
  AppendResultText(pLine + word.start, length);
  record->start = nStartLen + word.start;
  record->length = length > 0 ? length : 0;
  if (IsUnknownClass(word.handle)) record->word_ID = -1;
  if (word.type == kWhiteSpaceType) {
    record->word_ID = -1;
  } else if (bTagged) {
    WriteTag(word, token, pMap, record);
  }
  AppendWordBoundary();
  return token.step;
}

// The longest user word at word i replaces the words it covers when it ends
// exactly where one of them ends; one that ends inside a word is ignored.
void CMainSystem::MatchUserWord(const char* pLine, word_t* pWords, int nWordCount, int i,
                                bool bTagged, const CPOSmap* pMap, Token* pToken,
                                result_t* pRecord) {
  word_t& word = pWords[i];
  const int last = nWordCount - 1;
  const int available = pWords[last].start - word.start;
  if (available <= 0) return;
  int handle = -1;
  const int length = m_pUserDict->GetMaxWord(pLine + word.start,
                                             static_cast<unsigned int>(available), &handle,
                                             pToken->userTag);
  if (length <= 0) return;
  const int end = word.start + length;
  int j = i;
  while (j < last && pWords[j].end < end) ++j;
  if (j >= last || pWords[j].end != end) return;

  FitUserTag(pToken->userTag);
  pToken->userWord = true;
  pToken->step = j - i + 1;
  word.type = kUserWordType;
  word.handle = bTagged ? handle : 0;
  unsigned char id = pMap != nullptr ? pMap->GetID(pToken->userTag) : kNoTag;
  if (id == kNoTag) id = kDefaultTag;
  word.POS_id = id;
  pRecord->iPOS = id;
  CopyTagName(pToken->userTag, pRecord);
  pRecord->word_ID = -1;
  pRecord->word_type = 1;
}

// The patterns that the lattice splits: 一XX, an "@" run, a Latin run with
// URL or e-mail punctuation, and "//". The first that applies wins.
void CMainSystem::MergePatterns(const char* pLine, word_t* pWords, int nWordCount, int i,
                                bool bTagged, Token* pToken) {
  word_t& word = pWords[i];
  const int last = nWordCount - 1;
  if (IsRepeatedMeasure(pLine, pWords, last, i)) {
    word.handle = gUnknown_m_ID;
    if (bTagged) word.POS_id = kNumeralTag;
    pToken->step = 3;
    return;
  }
  if (pLine[word.start] == '@') {
    int j = i + 1;
    while (j < last && j - i < kMaxMentionWords && !EndsMention(pLine, pWords[j])) ++j;
    if (j - i > 1) {
      pToken->step = j - i;
      word.POS_id = kMentionTag;
      return;
    }
  }
  if (word.type == kLetterRunType) {
    bool address = false;
    int j = i + 1;
    for (; j < last; ++j) {
      const word_t& next = pWords[j];
      if (pLine[next.start] == '@') {
        address = true;
      } else if (next.type != kDigitRunType && next.type != kLetterRunType &&
                 !BeginsWithAny(pLine, next, "/\\_.:")) {
        break;
      }
    }
    pToken->step = j - i;
    word.POS_id = address ? kEmailTag : pToken->step > 1 ? kUrlTag : kLatinTag;
    return;
  }
  if (pLine[word.start] == '/' && i + 1 < last && pLine[pWords[i + 1].start] == '/') {
    pToken->step = 2;
    word.POS_id = kSessionTag;
  }
}

// The delimiter's first character and the tag name; iPOS for all but user
// words, which carry the identifier of their own tag.
void CMainSystem::WriteTag(const word_t& word, const Token& token, const CPOSmap* pMap,
                           result_t* pRecord) {
  if (!g_sPOSDelimiter.empty()) AppendResultText(g_sPOSDelimiter.data(), 1);
  char name[CPOSmap::kNameBufferSize] = "";
  const char* tag = name;
  if (token.userWord) {
    tag = token.userTag;
  } else if (word.POS_id == kEmailTag) {
    tag = "email";
  } else if (word.POS_id == kUrlTag) {
    tag = "url";
  } else if (word.POS_id == kSessionTag) {
    tag = "session";
  } else if (pMap != nullptr) {
    pMap->GetPOS(word.POS_id, name);
  }
  CopyTagName(tag, pRecord);
  AppendResultText(tag, static_cast<int>(strlen(tag)));
  if (pRecord->word_type != 1) pRecord->iPOS = word.POS_id;
}

// Writes the boundary's first two bytes but advances by one, so the next
// token (or the final NUL) overwrites the second: the text carries exactly
// the boundary's first character after each token, and an empty boundary
// leaves a NUL there.
void CMainSystem::AppendWordBoundary() {
  if (!ReserveResultText(m_nResultLen + 3)) return;
  const std::string& boundary = g_sWordBoundary;
  m_sResult[m_nResultLen] = boundary.empty() ? '\0' : boundary[0];
  m_sResult[m_nResultLen + 1] = boundary.size() > 1 ? boundary[1] : '\0';
  ++m_nResultLen;
}

void CMainSystem::TerminateResult() {
  if (ReserveResultText(m_nResultLen + 1)) m_sResult[m_nResultLen] = '\0';
}

int CMainSystem::SetOutput(const char* pLine, int nStartLen, int nWordLen, int /*handle*/,
                           int /*nOutputStyle*/, bool bOut) {
  const char* word = pLine + nStartLen;
  if (bOut) {
    NoteSpan(nStartLen, nWordLen, m_sOutput.size());
    m_sOutput.append(word, strnlen(word, static_cast<size_t>(nWordLen)));
    m_sOutput += g_sWordBoundary;
    result_t* record = AppendRecord(&m_pVecOut, &m_nVecOutLen, &m_nVecOutMemSize);
    if (record != nullptr) {
      record->start = nStartLen;
      record->length = nWordLen;
    }
    return m_nVecOutLen;
  }
  NoteSpan(nStartLen, nWordLen, static_cast<size_t>(m_nResultLen));
  AppendResultText(word, nWordLen);
  AppendWordBoundary();
  TerminateResult();
  if (!m_bKeepLineRecords) return m_nVecResultLen;
  result_t* record = AppendRecord(&m_pVecResult, &m_nVecResultLen, &m_nVecResultMemSize);
  if (record != nullptr) {
    record->start = nStartLen;
    record->length = nWordLen;
  }
  return m_nVecResultLen;
}

bool CMainSystem::SetPOSmap(int nPOSmap) {
  if (nPOSmap < 0 || nPOSmap >= kMapLevels) return false;
  m_nPOSmap.store(nPOSmap, std::memory_order_relaxed);
  return true;
}

int CMainSystem::GetPosmap() { return m_nPOSmap.load(std::memory_order_relaxed); }
