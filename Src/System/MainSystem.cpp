// MainSystem.cpp: construction, the busy guard, the processing drivers and
// the work buffers. Output is in MainSystemOutput.cpp, the dictionary passes
// in MainSystemField.cpp, files and word queries in MainSystemFile.cpp.
#include "System/MainSystem.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "Segment/PreProcess.h"
#include "Segment/Segment.h"
#include "System/PlaceRecogniser.h"
#include "System/CharModel.h"
#include "System/Transliteration.h"
#include "Tagger/HMMTagger.h"
#include "Tagger/RoleGate.h"
#include "Utility/BufferGrowth.h"
#include "Utility/CodeTran.h"
#include "Utility/KeyWordFinder.h"
#include "Utility/FSA.h"
#include "Utility/Unigram.h"
#include "Utility/global_linux.h"

namespace {

// Texts longer than this are processed line by line.
constexpr size_t kLongTextBytes = 100;
// Initial capacities of the work buffers.
constexpr int kInitialResultBytes = 10240;
constexpr int kInitialRecords = 2048;
// Records and words are added in steps of this many beyond what is needed.
constexpr int kGrowthStep = 1024;
// Result text bytes reserved per input byte, untagged and tagged.
constexpr int kUntaggedBytesPerByte = 3;
constexpr int kTaggedBytesPerByte = 6;
// Longest text one call analyses: its result text, up to six bytes a byte,
// is indexed by int.
constexpr size_t kMaxLineBytes = INT_MAX / kTaggedBytesPerByte - kGrowthStep;
// Lines up to this long have their result text reserved before the run; a
// longer one's grows as it is written, so memory follows the result.
constexpr int kReservedLineBytes = 1 << 20;
// Default role of the person-name role tagger.
constexpr int kDefaultRole = 22;

bool IsLineBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

// A second call on a busy instance waits on m_idle until the first has
// finished; m_bProcessing is only touched under m_mutex.
CMainSystem::Busy::Busy(CMainSystem* system) : system_(system) {
  pthread_mutex_lock(&system_->m_mutex);
  while (system_->m_bProcessing) pthread_cond_wait(&system_->m_idle, &system_->m_mutex);
  system_->m_bProcessing = true;
  pthread_mutex_unlock(&system_->m_mutex);
  system_->m_bFailed = false;  // each call starts afresh
}

CMainSystem::Busy::~Busy() {
  pthread_mutex_lock(&system_->m_mutex);
  system_->m_bProcessing = false;
  pthread_cond_signal(&system_->m_idle);
  pthread_mutex_unlock(&system_->m_mutex);
}

CMainSystem::CMainSystem(CCharset* pCharset, CPDAT* pCoreDict, CUnigram* pUnigram,
                         CBigram* pBiDict, CTrie* pUserDict, CPDAT* pFieldDict,
                         CPDAT* pGranDict, CPOS* pCorePOS, CPOS* pFieldPOS,
                         CPOS* pGranPOS, CPOSmap** ppPOSmap,
                         CContextStat* pPOSContext, CPOS* pPersonRole,
                         CContextStat* pPersonContext, CFSA* pFSA,
                         CCodeTran* pCodeTrans)
    : m_pUnigram(pUnigram), m_pCoreDict(pCoreDict), m_pCharset(pCharset),
      m_pBiDict(pBiDict), m_pUserDict(pUserDict), m_pFieldDict(pFieldDict),
      m_pGranDict(pGranDict), m_pCorePOS(pCorePOS), m_pFieldPOS(pFieldPOS),
      m_pGranPOS(pGranPOS), m_ppPOSmap(ppPOSmap), m_pPOSContext(pPOSContext),
      m_pPersonRole(pPersonRole), m_pPersonContext(pPersonContext),
      m_pPersonFSA(pFSA), m_pCodeTranslator(pCodeTrans),
      m_wordStats(pCoreDict, pUnigram, pBiDict) {
  pthread_mutex_init(&m_mutex, nullptr);
  pthread_cond_init(&m_idle, nullptr);
  m_pKeyWordFinder = new CKeyWordFinder(m_pUnigram, &m_wordStats);
  m_pPreProcess = new (std::nothrow) CPreProcess(m_pCharset, m_pCoreDict, m_pUserDict);
  if (m_pPreProcess == nullptr) {
    WriteLog("Cannot build object CPreProcess.\n", nullptr);
    return;
  }
  m_pSegmenter = new (std::nothrow) CSegment(m_pCoreDict, m_pUnigram, m_pBiDict);
  if (m_pSegmenter == nullptr) {
    WriteLog("Cannot build object  CSegment", nullptr);
    return;
  }
  const double vocabulary = m_pUnigram != nullptr ? m_pUnigram->GetItemCount() : 0.0;
  if (g_bPOSTagger) {
    m_pTagger = new CHMMTagger(m_pCorePOS, m_pPOSContext, vocabulary, kDefaultTag);
  }
  if (g_bNERPerson) {
    m_pPERTagger = new CHMMTagger(m_pPersonRole, m_pPersonContext, vocabulary, kDefaultRole);
  }
  AllocateBuffers();
}

CMainSystem::~CMainSystem() {
  FreeBuffers();
  delete m_pKeyWordFinder;
  delete m_pPreProcess;
  delete m_pSegmenter;
  delete m_pTagger;
  delete m_pPERTagger;
  pthread_cond_destroy(&m_idle);
  pthread_mutex_destroy(&m_mutex);
}

void CMainSystem::AllocateBuffers() {
  if (ReallocateElements(&m_sResult, kInitialResultBytes)) {
    m_nResultMemSize = kInitialResultBytes;
    m_sResult[0] = '\0';
  }
  if (ReallocateElements(&m_pVecResult, kInitialRecords)) m_nVecResultMemSize = kInitialRecords;
  if (ReallocateElements(&m_pVecOut, kInitialRecords)) m_nVecOutMemSize = kInitialRecords;
  if (ReallocateElements(&m_pVecField, kInitialRecords)) m_nFiledMemSize = kInitialRecords;
}

void CMainSystem::FreeBuffers() {
  free(m_sResult);
  free(m_pVecResult);
  free(m_pVecOut);
  free(m_pVecField);
  m_sResult = nullptr;
  m_pVecResult = m_pVecOut = nullptr;
  m_pVecField = nullptr;
  m_nResultMemSize = m_nResultLen = 0;
  m_nVecResultMemSize = m_nVecResultLen = 0;
  m_nVecOutMemSize = m_nVecOutLen = 0;
  m_nFiledMemSize = 0;
}

const char* CMainSystem::Process(const char* sLineOrig, int bPOStagged, bool bUserDict) {
  Busy busy(this);
  const char* result = RunProcess(sLineOrig, bPOStagged, bUserDict);
  return m_bFailed ? nullptr : result;
}

void CMainSystem::Fail(const std::string& sReason) {
  if (m_bFailed) return;
  m_bFailed = true;
  WriteLog(sReason, nullptr);
}

const char* CMainSystem::RunProcess(const char* sLine, int bPOStagged, bool bUserDict) {
  if (m_pCodeTranslator != nullptr) return RunTranslatedProcess(sLine, bPOStagged, bUserDict);
  RunText(sLine, bPOStagged != 0, bUserDict, true);
  if (m_bLongText) return m_sOutput.c_str();
  return m_sResult != nullptr ? m_sResult : "";
}

const char* CMainSystem::RunTranslatedProcess(const char* sLine, int bPOStagged,
                                              bool bUserDict) {
  const char* text = ToAnalysisText(sLine, &m_sTransText);
  m_vecSpans.clear();
  m_bTrackSpans = true;
  RunText(text, bPOStagged != 0, bUserDict, true);
  m_bTrackSpans = false;
  const char* result = m_bLongText ? m_sOutput.c_str() : m_sResult;
  if (result == nullptr) return "";
  return KeepResult(RestoreText(result, sLine != nullptr ? sLine : "").c_str());
}

const char* CMainSystem::ToAnalysisText(const char* sText, std::string* pGBK) {
  if (m_pCodeTranslator == nullptr) return sText;
  const size_t length = sText != nullptr ? strlen(sText) : 0;
  if (!m_pCodeTranslator->ToGBK(sText, length, pGBK, &m_vecTransOffsets)) {
    Fail("Text too long to analyse: " + std::to_string(length) + " bytes");
  }
  return pGBK->c_str();
}

TextLayout CMainSystem::CallerLayout() const {
  return m_pCodeTranslator != nullptr ? m_pCodeTranslator->Layout() : TextLayout::kGbk;
}

std::string CMainSystem::RestoreText(const char* sResult, const char* sCaller) const {
  const size_t resultLen = strlen(sResult);
  const int analysed = static_cast<int>(m_sTransText.size());
  std::string out;
  out.reserve(resultLen + resultLen / 2);
  size_t done = 0;
  for (const TextSpan& span : m_vecSpans) {
    const size_t at = static_cast<size_t>(span.textPos);
    const size_t end = at + static_cast<size_t>(span.length);
    if (at < done || end > resultLen) continue;
    m_pCodeTranslator->FromGBK(sResult + done, at - done, &out);
    const bool fromText = span.start >= 0 && span.length >= 0 &&
                          span.start <= analysed - span.length &&
                          memcmp(sResult + at, m_sTransText.data() + span.start,
                                 static_cast<size_t>(span.length)) == 0;
    if (fromText) {
      const int from = m_vecTransOffsets[static_cast<size_t>(span.start)];
      const int to = m_vecTransOffsets[static_cast<size_t>(span.start + span.length)];
      out.append(sCaller + from, static_cast<size_t>(to - from));
    } else {
      m_pCodeTranslator->FromGBK(sResult + at, end - at, &out);
    }
    done = end;
  }
  m_pCodeTranslator->FromGBK(sResult + done, resultLen - done, &out);
  return out;
}

// Without a translator the text is GBK already: sLineTrans stays untouched and
// the records' offsets refer to the caller's text whatever bKeyWordExtract.
int CMainSystem::ProcessA(const char* sLineOrig, std::string& sLineTrans, bool bPOStagged,
                          bool bUserDict, bool bKeyWordExtract) {
  Busy busy(this);
  return RunRecords(sLineOrig, &sLineTrans, bPOStagged, bUserDict, bKeyWordExtract);
}

int CMainSystem::RunRecords(const char* sLine, std::string* pGBK, bool bPOStagged,
                            bool bUserDict, bool bKeyWordExtract) {
  RunText(ToAnalysisText(sLine, pGBK), bPOStagged, bUserDict, false);
  int count = 0;
  result_t* records = GetResult(&count);
  if (m_bFailed) return 0;
  if (m_pCodeTranslator != nullptr && !bKeyWordExtract) MapRecordsToCaller(records, count);
  return count;
}

void CMainSystem::MapRecordsToCaller(result_t* pRecords, int nCount) const {
  if (pRecords == nullptr || m_vecTransOffsets.empty()) return;
  const int last = static_cast<int>(m_vecTransOffsets.size()) - 1;
  const auto clamp = [last](long long value) {
    return static_cast<int>(std::min<long long>(std::max<long long>(value, 0), last));
  };
  for (int i = 0; i < nCount; ++i) {
    result_t& record = pRecords[i];
    const int from = clamp(record.start);
    const int to = clamp(static_cast<long long>(record.start) + std::max(record.length, 0));
    record.start = m_vecTransOffsets[static_cast<size_t>(from)];
    record.length = m_vecTransOffsets[static_cast<size_t>(to)] - record.start;
    TranslateTagName(&record);
  }
}

void CMainSystem::FitUserTag(char* tag) const {
  const size_t length = strlen(tag);
  if (m_pCodeTranslator == nullptr ||
      std::all_of(tag, tag + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    return;
  }
  size_t kept = 0;
  std::string converted;
  while (kept < length) {
    const size_t next =
        kept + static_cast<size_t>(ScanChar(TextLayout::kGbk, tag + kept, length - kept).len);
    converted.clear();
    m_pCodeTranslator->FromGBK(tag, next, &converted);
    if (converted.size() > sizeof(result_t::sPOS) - 1) break;
    kept = next;
  }
  tag[kept] = '\0';
}

// A user word's tag may hold any characters: the record gives it in the
// caller's encoding, as the result text does, cut to the field between
// characters.
void CMainSystem::TranslateTagName(result_t* pRecord) const {
  char* tag = pRecord->sPOS;
  const size_t length = strnlen(tag, sizeof pRecord->sPOS);
  if (std::all_of(tag, tag + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    return;
  }
  std::string converted;
  m_pCodeTranslator->FromGBK(tag, length, &converted);
  const TextLayout layout = m_pCodeTranslator->Layout();
  size_t kept = 0;
  while (kept < converted.size()) {
    const size_t next = kept + static_cast<size_t>(
                                   ScanChar(layout, converted.data() + kept, converted.size() - kept).len);
    if (next > sizeof pRecord->sPOS - 1) break;
    kept = next;
  }
  memset(tag, 0, sizeof pRecord->sPOS);
  memcpy(tag, converted.data(), kept);
}

int CMainSystem::ProcessAtomEx(const char* sLine, bool bPOStagged, bool bUserDict,
                               bool bStrOut) {
  Busy busy(this);
  return RunText(sLine, bPOStagged, bUserDict, bStrOut);
}

int CMainSystem::RunText(const char* sLine, bool bPOStagged, bool bUserDict, bool bStrOut) {
  m_bLongText = false;
  // A result wanted as text needs no records: none are made.
  m_bKeepLineRecords = !bStrOut;
  const size_t length = sLine != nullptr ? strlen(sLine) : 0;
  if (length > kMaxLineBytes) {
    Fail("Text too long to analyse: " + std::to_string(length) + " bytes (at most " +
         std::to_string(kMaxLineBytes) + " in one call)");
    return ProcessAtom(nullptr, bPOStagged, bUserDict);
  }
  if (length <= kLongTextBytes) return ProcessAtom(sLine, bPOStagged, bUserDict);
  return RunLongText(sLine, static_cast<int>(length), bPOStagged, bUserDict, bStrOut);
}

// Cuts a long text into lines (leading white space of a line is skipped),
// analyses each, gathers the results in m_sOutput or m_pVecOut and keeps
// each line break as a token of its own.
int CMainSystem::RunLongText(const char* sLine, int nLen, bool bPOStagged, bool bUserDict,
                             bool bStrOut) {
  m_bLongText = true;
  std::vector<char> text(sLine, sLine + nLen + 1);
  m_nVecOutLen = 0;
  if (bStrOut) m_sOutput.clear();
  char* const base = text.data();
  char* cursor = base;
  for (;;) {
    char* next = nullptr;
    char separator = '\0';
    char* line = StrLine(cursor, &next, &separator);
    if (line == nullptr) break;
    const size_t firstSpan = m_vecSpans.size();
    ProcessAtom(line, bPOStagged, bUserDict);
    if (next != nullptr) *next = separator;
    if (!bStrOut) {
      AppendLineRecords(static_cast<int>(line - base));
    } else if (m_sResult != nullptr) {
      const size_t kept = strlen(m_sResult);
      MoveLineSpans(firstSpan, static_cast<int>(line - base), m_sOutput.size(), kept);
      m_sOutput.append(m_sResult, kept);
    }
    if (next == nullptr) break;
    SetOutput(base, static_cast<int>(next - base), 1, -1, 1, true);
    cursor = next + 1;
  }
  return m_nVecResultLen;
}

void CMainSystem::MoveLineSpans(size_t first, int nLineOffset, size_t nOutputPos,
                                size_t nLineResultLen) {
  size_t kept = first;
  for (size_t i = first; i < m_vecSpans.size(); ++i) {
    TextSpan span = m_vecSpans[i];
    if (static_cast<size_t>(span.textPos) + static_cast<size_t>(span.length) > nLineResultLen) {
      continue;
    }
    span.start += nLineOffset;
    span.textPos += static_cast<int>(nOutputPos);
    m_vecSpans[kept++] = span;
  }
  m_vecSpans.resize(kept);
}

void CMainSystem::AppendLineRecords(int nLineOffset) {
  if (!ReserveRecords(&m_pVecOut, &m_nVecOutMemSize, int64_t{m_nVecOutLen} + m_nVecResultLen)) {
    return;
  }
  for (int k = 0; k < m_nVecResultLen; ++k) {
    result_t& record = m_pVecOut[m_nVecOutLen + k];
    record = m_pVecResult[k];
    record.start += nLineOffset;
  }
  m_nVecOutLen += m_nVecResultLen;
}

int CMainSystem::ProcessAtom(const char* sLine, bool bPOStagged, bool bUserDict) {
  m_nVecResultLen = 0;
  m_nResultLen = 0;
  if (m_sResult != nullptr) m_sResult[0] = '\0';
  const size_t length = sLine != nullptr ? strlen(sLine) : 0;
  if (length == 0 || length > kMaxLineBytes) return 0;
  if (m_pPreProcess == nullptr || m_pSegmenter == nullptr) return 0;
  const int n = static_cast<int>(length);
  PrepareLineBuffers(n, g_bPOSTagger && bPOStagged);
  int pos = 0;
  while (pos < n) {
    while (pos < n && IsLineBlank(sLine[pos])) SetOutput(sLine, pos++, 1, -1, 1, false);
    if (pos >= n) break;
    const char* segment = sLine + pos;
    const char* next = m_pPreProcess->FullSegment(segment);
    ProcessSegment(segment, pos, bPOStagged, bUserDict);
    if (!m_bKeepLineRecords) m_nVecResultLen = 0;
    if (next <= segment) break;  // nothing consumed; never loop on the same bytes
    pos += static_cast<int>(next - segment);
  }
  return m_nVecResultLen;
}

// Sizes the result text of a line of ordinary length before any stage runs,
// so that appending words does not reallocate; a longer line's result, and
// the records, grow as they are written: a call holds what its result needs,
// not a worst case per input byte.
void CMainSystem::PrepareLineBuffers(int nLen, bool bTagged) {
  if (nLen > kReservedLineBytes) return;
  ReserveResultText(nLen * (bTagged ? kTaggedBytesPerByte : kUntaggedBytesPerByte));
}

void CMainSystem::ProcessSegment(const char* pSegment, int nOffset, bool bPOStagged,
                                 bool bUserDict) {
  if (m_pPreProcess->AtomCount() < 3) return;  // no lattice was built for it
  if (m_pPreProcess->WordGraph() == nullptr) {
    Fail("Out of memory: the word lattice of a sentence of " +
         std::to_string(m_pPreProcess->AtomCount()) + " atoms");
    return;
  }
  m_pSegmenter->BiSegment(m_pPreProcess->WordGraph(), m_pPreProcess->GraphLength(),
                          m_pPreProcess->WordCounter(), m_pPreProcess->AtomCount());
  if (m_pSegmenter->m_pWords == nullptr) {
    Fail("Out of memory: the words of a sentence of " +
         std::to_string(m_pPreProcess->AtomCount()) + " atoms");
    return;
  }
  word_t* words = m_pSegmenter->m_pWords;
  int count = m_pSegmenter->m_nWordCount;
  const bool tagging = g_bPOSTagger && bPOStagged && m_pTagger != nullptr;
  if (m_pPlaces != nullptr) m_pPlaces->Find(words, count, kMergedWordType);
  if (m_pPERTagger != nullptr) {
    if (m_pPersonGate == nullptr || m_pPersonGate->MayMerge(words, count, gUnknown_nr_ID)) {
      m_pPERTagger->Tagging(words, count);
      if (m_pPersonFSA != nullptr) m_pPersonFSA->MaxPR(words, &count, gUnknown_nr_ID);
    } else {
      m_pPERTagger->SkipSentence(words, count);
    }
  }
  if (m_pPlaces != nullptr) m_pPlaces->Claim(words, &count);
  if (m_pTransliteration != nullptr) m_pTransliteration->Merge(pSegment, words, &count);
  if (m_pCharModel != nullptr) m_pCharModel->Merge(pSegment, words, &count);
  m_pSegmenter->m_nWordCount = count;
  // The tagger marks the merged names; without it they are marked here,
  // so that the words never depend on whether tags were asked for.
  if (!tagging && (m_pPERTagger != nullptr || m_pTransliteration != nullptr)) {
    MarkPersonNames(words, count);
  }
  if (tagging) m_pTagger->Tagging(words, count);
  if (tagging && m_pCharModel != nullptr) m_pCharModel->Tag(pSegment, words, count);
  if ((m_pGranDict != nullptr || m_pFieldDict != nullptr) &&
      !GrowBuffer(&m_pVecField, &m_nFiledMemSize, int64_t{count} + 2, kGrowthStep)) {
    Fail("Out of memory: the dictionary passes of a sentence of " + std::to_string(count) +
         " words");
    return;
  }
  if (m_pGranDict != nullptr) {
    int merged = 0;
    FieldDic(pSegment, words, count, m_pVecField, merged, m_pGranDict, m_pGranPOS, 0);
    words = m_pVecField;
    count = merged;
  }
  if (m_pFieldDict != nullptr) {
    // The field pass works on the granularity pass's output only; without a
    // granularity dictionary it is handed no words.
    word_t* source = m_pGranDict != nullptr ? m_pVecField : nullptr;
    const int sourceCount = m_pGranDict != nullptr ? count : 0;
    int merged = 0;
    FieldDic(pSegment, source, sourceCount, m_pVecField, merged, m_pFieldDict, m_pFieldPOS,
             kMergedWordType);
    words = m_pVecField;
    count = merged;
  }
  Output(pSegment, words, count, nOffset, bPOStagged, bUserDict);
}

std::unique_ptr<CRoleGate> CMainSystem::NewPersonGate(const CPOS& roles, const CFSA& automaton) {
  return std::make_unique<CRoleGate>(
      roles, std::initializer_list<unsigned char>{kDefaultRole, CHMMTagger::kSwitchedDefaultPOS, kNoTag},
      automaton);
}

void CMainSystem::SetPlaceModel(const CPlaceModel* pModel) {
  const double vocabulary = m_pUnigram != nullptr ? m_pUnigram->GetItemCount() : 0.0;
  m_pPlaces = pModel != nullptr ? std::make_unique<CPlaceRecogniser>(*pModel, vocabulary)
                                : nullptr;
}

void CMainSystem::MarkPersonNames(word_t* pWords, int nCount) {
  for (int i = 0; i < nCount; ++i) {
    word_t& word = pWords[i];
    if (word.handle >= 0 && word.handle == gUnknown_nr_ID) {
      word.POS_id = word.type;
      word.type = kMergedWordType;
    }
  }
}

result_t* CMainSystem::GetResult(int* p_nCount) {
  const bool longText = m_bLongText;
  if (p_nCount != nullptr) *p_nCount = longText ? m_nVecOutLen : m_nVecResultLen;
  return longText ? m_pVecOut : m_pVecResult;
}

bool CMainSystem::SetFieldPOS(CPOS* pFieldPOS) {
  m_pFieldPOS = pFieldPOS;
  return true;
}

bool CMainSystem::ReserveResultText(int64_t nBytes) {
  if (nBytes <= m_nResultMemSize) return true;
  const bool empty = m_nResultMemSize == 0;
  if (!GrowBuffer(&m_sResult, &m_nResultMemSize, nBytes, 0)) {
    Fail("Out of memory: a result text of " + std::to_string(nBytes) + " bytes");
    return false;
  }
  if (empty) m_sResult[0] = '\0';
  return true;
}

bool CMainSystem::ReserveRecords(result_t** ppVec, int* pCapacity, int64_t nRecords) {
  if (GrowBuffer(ppVec, pCapacity, nRecords, kGrowthStep)) return true;
  Fail("Out of memory: " + std::to_string(nRecords) + " result records");
  return false;
}

result_t* CMainSystem::AppendRecord(result_t** ppVec, int* pLen, int* pCapacity) {
  if (!ReserveRecords(ppVec, pCapacity, int64_t{*pLen} + 1)) return nullptr;
  return ClearRecord(*ppVec + (*pLen)++);
}

result_t* CMainSystem::ClearRecord(result_t* pRecord) {
  memset(pRecord, 0, sizeof(*pRecord));
  pRecord->iPOS = kNoTag;
  pRecord->word_ID = -1;
  return pRecord;
}

bool CMainSystem::AppendResultText(const char* pText, int nLen) {
  if (nLen < 0) nLen = 0;
  // Room for the text, the word boundary's two bytes and the final NUL; the
  // buffer doubles, so a long line's result grows in linear time.
  if (!ReserveResultText(int64_t{m_nResultLen} + nLen + 3)) return false;
  memcpy(m_sResult + m_nResultLen, pText, static_cast<size_t>(nLen));
  m_nResultLen += nLen;
  m_sResult[m_nResultLen] = '\0';
  return true;
}
