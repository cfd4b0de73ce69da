// MainSystemKeyWord.cpp: keywords, new words and fingerprints of texts and
// files, and the new-word collection kept in the instance's own finder.
//
// Every operation holds the instance's busy flag from the analysis to the
// copy of its result, so the records it scans and the buffer it returns
// cannot be replaced by another call on the same instance half-way.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "Segment/PreProcess.h"
#include "System/MainSystem.h"
#include "Utility/BinaryIO.h"
#include "Utility/CodeTran.h"
#include "Utility/KeyWordFinder.h"

namespace {

// Files are read in lines of at most this many bytes minus one.
constexpr int kLineBufferBytes = 10240;
// The result buffer grows to the string's length plus this much.
constexpr int kResultSlack = 1024;

}  // namespace

void CMainSystem::SetUserDict(CTrie* pUserDict) {
  Busy busy(this);
  m_pUserDict = pUserDict;
  if (m_pPreProcess != nullptr) m_pPreProcess->SetUserDict(pUserDict);
}

int CMainSystem::ScanText(CKeyWordFinder* pFinder, const char* sText) {
  // The finder builds new words from the pieces of the words the dictionary
  // lacks; the character model, which would join them first, stays out.
  struct Restore {
    const CCharModel*& slot;
    const CCharModel* const model;
    ~Restore() { slot = model; }
  } restore{m_pCharModel, std::exchange(m_pCharModel, nullptr)};
  // The records keep their offsets in the GBK text, which the finder reads.
  const char* text = ToAnalysisText(sText, &m_sTransText);
  RunText(text, true, false, false);
  int count = 0;
  const result_t* records = GetResult(&count);
  return pFinder->Scan(text, count, records);
}

// Lines longer than the buffer are scanned in pieces; the parts of a line
// between NUL bytes are scanned one after the other.
int CMainSystem::ScanFile(CKeyWordFinder* pFinder, FILE* fp, bool bStopAtCap) {
  char piece[kLineBufferBytes + kMaxCharBytes - 1];
  const TextLayout layout = CallerLayout();
  for (int length; (length = ReadFilePiece(fp, piece, kLineBufferBytes, layout)) > 0;) {
    const bool more = ForEachPart(piece, length, [&](const char* part) {
      return ScanText(pFinder, part) >= 0 || !bStopAtCap;
    });
    if (!more) return -1;
  }
  return 1;
}

const char* CMainSystem::KeepResult(const char* sText) {
  const size_t length = strlen(sText);
  if (length >= static_cast<size_t>(INT32_MAX - kResultSlack)) return "";
  const int needed = static_cast<int>(length);
  if (needed >= m_nResultMemSize && !ReserveResultText(needed + kResultSlack)) return "";
  memcpy(m_sResult, sText, length + 1);
  m_nResultLen = needed;
  return m_sResult;
}

const char* CMainSystem::KeepWordList(const char* sGBK) {
  if (m_pCodeTranslator == nullptr) return KeepResult(sGBK);
  std::string converted;
  m_pCodeTranslator->FromGBK(sGBK, strlen(sGBK), &converted);
  return KeepResult(converted.c_str());
}

const char* CMainSystem::Rank(CKeyWordFinder* pFinder, Ranking ranking, int nMaxKeyLimit,
                              bool bWeightOut) {
  if (m_bFailed) return nullptr;
  pFinder->GenerateNewWordList();
  const char* ranked = ranking == Ranking::kKeyWords
                           ? pFinder->GetKeyWordList(bWeightOut, nMaxKeyLimit)
                           : pFinder->GetNewWordList(bWeightOut, nMaxKeyLimit);
  return KeepWordList(ranked);
}

const char* CMainSystem::RankText(const char* sText, Ranking ranking, int nMaxKeyLimit,
                                  bool bWeightOut) {
  Busy busy(this);
  CKeyWordFinder finder(m_pUnigram, &m_wordStats);
  ScanText(&finder, sText);
  return Rank(&finder, ranking, nMaxKeyLimit, bWeightOut);
}

const char* CMainSystem::RankFile(const char* sFilename, Ranking ranking, int nMaxKeyLimit,
                                  bool bWeightOut) {
  const FilePtr fp = OpenFile(sFilename, "r");
  if (!fp) return nullptr;
  Busy busy(this);
  CKeyWordFinder finder(m_pUnigram, &m_wordStats);
  ScanFile(&finder, fp.get(), false);
  return Rank(&finder, ranking, nMaxKeyLimit, bWeightOut);
}

const char* CMainSystem::GetKeyWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut) {
  return RankText(sLine, Ranking::kKeyWords, nMaxKeyLimit, bWeightOut);
}

const char* CMainSystem::GetFileKeyWords(const char* sFilename, int nMaxKeyLimit,
                                         bool bWeightOut) {
  return RankFile(sFilename, Ranking::kKeyWords, nMaxKeyLimit, bWeightOut);
}

const char* CMainSystem::GetNewWords(const char* sText, int nMaxKeyLimit, bool bWeightOut) {
  return RankText(sText, Ranking::kNewWords, nMaxKeyLimit, bWeightOut);
}

const char* CMainSystem::GetFileNewWords(const char* sFilename, int nMaxKeyLimit,
                                         bool bWeightOut) {
  return RankFile(sFilename, Ranking::kNewWords, nMaxKeyLimit, bWeightOut);
}

unsigned long CMainSystem::GetFinger(const char* sLine) {
  Busy busy(this);
  CKeyWordFinder finder(m_pUnigram, &m_wordStats);
  ScanText(&finder, sLine);
  if (m_bFailed) return 0;
  finder.GenerateNewWordList();
  return finder.FingerPrint(*finder.GetKeyWordListE());
}

bool CMainSystem::NWI_Start() {
  Busy busy(this);
  m_pKeyWordFinder->Reset();
  return true;
}

int CMainSystem::NWI_AddMem(const char* sText) {
  Busy busy(this);
  const int scanned = ScanText(m_pKeyWordFinder, sText);
  return m_bFailed ? 0 : scanned;
}

int CMainSystem::NWI_AddFile(const char* sFilename) {
  const FilePtr fp = OpenFile(sFilename, "r");
  if (!fp) return 0;
  Busy busy(this);
  const int scanned = ScanFile(m_pKeyWordFinder, fp.get(), true);
  return m_bFailed ? 0 : scanned;
}

bool CMainSystem::NWI_Complete() {
  Busy busy(this);
  m_pKeyWordFinder->GenerateNewWordList();
  return true;
}

const char* CMainSystem::NWI_GetResult(bool bWeightOut) {
  Busy busy(this);
  return KeepWordList(m_pKeyWordFinder->GetNewWordList(bWeightOut, -1));
}

std::vector<std::string> CMainSystem::NWI_GetResultWords() {
  Busy busy(this);
  std::vector<std::string> lines;
  for (const _tWordAV& word : *m_pKeyWordFinder->GetNewWordListE()) {
    lines.push_back(word.word + " " + word.pos);
  }
  return lines;
}
