#include "Utility/KeyWordFinder.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "Utility/WordStats.h"
#include "Utility/BinaryIO.h"
#include "Utility/Hash.h"
#include "Utility/Unigram.h"
#include "Utility/global_linux.h"
#include "Utility/trie.h"

const char CKeyWordFinder::kMarker[] = "\xc4\xa9##\xc4\xa9";  // 末##末

namespace {

constexpr char kNumeralClass[] = "\xce\xb4##\xca\xfd";  // 未##数
constexpr char kTimeClass[] = "\xce\xb4##\xca\xb1";     // 未##时
// Tab, newline, carriage return, space and the full-width space: a token
// found inside this string is a blank.
constexpr char kBlanks[] = "\t\n\r \xa1\xa1";
constexpr char kStopTagInitials[] = "uwcpre";
constexpr int kMarkerPosId = 1;
constexpr int kNewWordPosId = 32;
constexpr char kNewWordPos[] = "n_new";
// Tags that neither seed nor join a merge.
constexpr int kUnmergedPosIds[] = {24, 27, 28, 30};
// Left tags whose pairs with adjectives and adverbs (or these right tags)
// merge only when both parts are rare.
constexpr int kRareLeftPosIds[] = {3, 11, 12, 13};
constexpr int kRareRightPosIds[] = {68, 76};
// Frequency a rare word stays below.
constexpr double kRareFreq = 419.5;
// Above this many candidates merging is worth a log line.
constexpr size_t kLargeCandidateCount = 10000;

// Tags scored up by a tenth; within each group of them the second and later
// keywords are damped.
constexpr int kFavouredPosIds[] = {24, 27, 28, 29, 30, 52};
constexpr int kGroupedPosIds[][3] = {{24, 27, 28}, {29, 30, -1}, {52, -1, -1}};
constexpr size_t kGroupCount = sizeof(kGroupedPosIds) / sizeof(kGroupedPosIds[0]);
// The fingerprint joins this many top words into at most kFingerLen bytes.
constexpr size_t kFingerWords = 6;
constexpr size_t kFingerLen = 199;

template <size_t N>
bool OneOf(int value, const int (&set)[N]) {
  return std::find(std::begin(set), std::end(set), value) != std::end(set);
}

bool Initial(const std::string& pos, const char* letters) {
  return !pos.empty() && std::strchr(letters, pos[0]) != nullptr;
}

bool IsKnownWord(const CWordStats* stats, const char* word) {
  return stats != nullptr && stats->IsWord(word);
}

// A scanned token of four bytes or more that no dictionary knows.
bool IsSingleUnknownUnit(const CWordStats* stats, const _tWordAV& w) {
  return w.unit_count == 1 && w.word.size() >= 4 && !IsKnownWord(stats, w.word.c_str());
}

double EntropyTerm(const CWordStats* stats, const char* word) {
  const double p = stats != nullptr ? stats->GetUniProb(word) : 0.0;
  return p > 0.0 ? -p * std::log(p) : 0.0;
}

bool IsQuotation(const std::string& pos) { return strncasecmp(pos.c_str(), "wy", 2) == 0; }

// Whether the record takes part in scoring at all.
bool IsScorable(const _tWordAV& r) {
  if (r.is_stopword || r.freq <= 1) return false;
  if (r.word.size() <= 2 && !Initial(r.pos, "x")) return false;
  return r.vecLV.size() + r.vecRV.size() > 3;
}

// Subtracts p ln p, p = count / freq, for every neighbour entry.
void AddContextEntropy(_tWordAV& r) {
  for (const auto* list : {&r.vecLV, &r.vecRV}) {
    for (const _word_freq& e : *list) {
      const double p = static_cast<double>(e.freq) / r.freq;
      r.weight -= p * std::log(p);
    }
  }
}

// Divides the weight of words far from three characters, when short single
// tokens or long merged ones.
void CorrectLength(_tWordAV& r) {
  const size_t bytes = r.word.size();
  if ((r.unit_count == 1 && bytes <= 3) || (r.unit_count >= 4 && bytes >= 11)) {
    const int t = static_cast<int>(static_cast<double>(bytes) * 0.5 - 3.0);
    r.weight /= std::abs(t) + 1.0;
  }
}

void CorrectTag(const CWordStats* stats, _tWordAV& r) {
  const bool known = IsKnownWord(stats, r.word.c_str());
  if (OneOf(r.pos_id, kFavouredPosIds)) {
    r.weight *= 1.1;
    if (!known) r.weight *= 1.2;
  } else if (!known) {
    r.weight *= 1.2;
  } else if (Initial(r.pos, "ad")) {
    r.weight *= 0.5;
  } else if (!Initial(r.pos, "nv")) {
    r.weight *= 0.3;
  }
}

// The damping group of a tag, or -1.
int GroupOf(int nPosId) {
  for (size_t g = 0; g < kGroupCount; ++g) {
    if (OneOf(nPosId, kGroupedPosIds[g])) return static_cast<int>(g);
  }
  return -1;
}

void SortByWeight(std::vector<_tWordAV>& list) { std::sort(list.begin(), list.end()); }

}  // namespace

_tWordAV::_tWordAV(const std::string& sWord, const std::string& sPos, int nPosId)
    : word(sWord),
      pos(sPos),
      pos_id(nPosId),
      is_stopword((!sPos.empty() && std::strchr(kStopTagInitials, sPos[0]) != nullptr) ||
                  (!sWord.empty() && (sWord[0] == '<' || sWord[0] == '>'))) {}

int Find(int nHandle, std::vector<_word_freq>& vecList, int& nMid) {
  const int size = static_cast<int>(vecList.size());
  int low = 0;
  int high = size - 1;
  int mid = 0;
  while (low <= high) {
    mid = (low + high) / 2;
    if (vecList[mid].handle == nHandle) {
      nMid = mid;
      return 1;
    }
    if (vecList[mid].handle < nHandle) {
      low = mid + 1;
    } else {
      high = mid - 1;
    }
  }
  nMid = std::max(mid - 2, 0);
  while (nMid < size && vecList[nMid].handle < nHandle) ++nMid;
  return 0;
}

int Add(int nHandle, std::vector<_word_freq>& vecList) {
  int nMid = 0;
  if (Find(nHandle, vecList, nMid) == 1) {
    ++vecList[nMid].freq;
  } else {
    vecList.insert(vecList.begin() + nMid, _word_freq{nHandle, 1});
  }
  return nMid;
}

CKeyWordFinder::CKeyWordFinder(CUnigram* pUnigram, const CWordStats* pStats)
    : m_trie(std::make_unique<CTrie>()), m_pUnigram(pUnigram), m_pStats(pStats) {}

CKeyWordFinder::~CKeyWordFinder() = default;

void CKeyWordFinder::Reset() {
  m_vecWordAV.clear();
  m_vecNewWordInfo.clear();
  m_trie = std::make_unique<CTrie>();
  m_vecEntryIndex.clear();
  m_nFirstPosition = GetPositionCount();
  std::vector<int>().swap(m_vecWordIDList);
  m_bRanked = false;
}

int CKeyWordFinder::GetWordIndex(const char* sWord) const {
  const int entry = m_trie->Find(sWord);
  if (entry < 0 || entry >= static_cast<int>(m_vecEntryIndex.size())) return -1;
  return m_vecEntryIndex[entry];
}

int CKeyWordFinder::AddCandidate(_tWordAV&& candidate) {
  const char* word = candidate.word.c_str();
  int entry = m_trie->Find(word);
  if (entry < 0) {
    m_trie->AddTrie(word);
    entry = m_trie->Find(word);
    if (entry < 0) return -1;
  }
  if (entry >= static_cast<int>(m_vecEntryIndex.size())) m_vecEntryIndex.resize(entry + 1, -1);
  const int index = static_cast<int>(m_vecWordAV.size());
  m_vecEntryIndex[entry] = index;
  m_vecWordAV.push_back(std::move(candidate));
  return index;
}

int CKeyWordFinder::MarkerHandle() {
  const int index = GetWordIndex(kMarker);
  if (index >= 0) return index;
  _tWordAV marker(kMarker, "", kMarkerPosId);
  marker.is_stopword = true;
  return AddCandidate(std::move(marker));
}

bool CKeyWordFinder::IsFrequentStopWord(const char* sWord, const result_t& r) const {
  if (r.word_ID < 0 || m_pUnigram == nullptr || m_pUnigram->GetFreq(r.word_ID) < kStopWordFreq) {
    return false;
  }
  if (std::strlen(sWord) == 2) return r.sPOS[0] != 'm' && r.sPOS[0] != 'q';
  return r.sPOS[0] == 'f';
}

_tWordAV CKeyWordFinder::NewCandidate(const char* sWord, const result_t& r,
                                      bool bClassToken) const {
  _tWordAV candidate(sWord, std::string(r.sPOS, strnlen(r.sPOS, sizeof(r.sPOS))), r.iPOS);
  if (bClassToken || (!candidate.is_stopword && IsFrequentStopWord(sWord, r))) {
    candidate.is_stopword = true;
  }
  candidate.weight = EntropyTerm(m_pStats, sWord);
  return candidate;
}

int CKeyWordFinder::GetWord(const char* sLine, int /*nCount*/, const result_t* result, int i,
                            char* sWord, int& nCurHandle) {
  const result_t& r = result[i];
  bool classToken = false;
  if (r.length >= 0 && r.length <= kMaxTokenLen) {
    std::memcpy(sWord, sLine + r.start, r.length);
    sWord[r.length] = '\0';
  } else {
    std::strcpy(sWord, kMarker);
  }
  if (!IsKnownWord(m_pStats, sWord) && (r.sPOS[0] == 'm' || r.sPOS[0] == 't')) {
    std::strcpy(sWord, r.sPOS[0] == 'm' ? kNumeralClass : kTimeClass);
    classToken = true;
  }
  if (std::strstr(kBlanks, sWord) != nullptr) std::strcpy(sWord, kMarker);

  int index = std::strcmp(sWord, kMarker) == 0 ? MarkerHandle() : GetWordIndex(sWord);
  if (index < 0) index = AddCandidate(NewCandidate(sWord, r, classToken));
  if (index < 0) {  // a string the trie cannot hold counts as a blank
    std::strcpy(sWord, kMarker);
    index = MarkerHandle();
  }
  ++m_vecWordAV[index].freq;
  nCurHandle = index;
  return index;
}

int CKeyWordFinder::Scan(const char* sLine, int nCount, const result_t* result) {
  if (nCount < 1 || result == nullptr || sLine == nullptr || sLine[0] == '\0') return 0;
  if (m_bRanked) return 0;
  if (GetPositionCount() > kMaxPositions) {
    char message[128];
    std::snprintf(message, sizeof(message),
                  "\xb4\xa6\xc0\xed\xb5\xc4\xb4\xca\xd7\xdc\xca\xfd%d\xa3\xac\xb3\xac\xb9\xfd%d,"
                  "\xd1\xb5\xc1\xb7\xb2\xbb\xd4\xd9\xbc\xcc\xd0\xf8",  // 处理的词总数%d，超过%d,训练不再继续
                  static_cast<int>(GetPositionCount()), static_cast<int>(kMaxPositions));
    WriteLog(message, nullptr);
    return -1;
  }
  const int marker = MarkerHandle();
  ++m_vecWordAV[marker].freq;
  char sWord[kMaxTokenLen + 1];
  int prev = marker;
  for (int i = 0; i < nCount; ++i) {
    int cur = -1;
    GetWord(sLine, nCount, result, i, sWord, cur);
    if (cur == marker && prev == marker) continue;
    m_vecWordIDList.push_back(cur);
    const int p = static_cast<int>(GetPositionCount()) - 1;
    if (!m_vecWordAV[cur].is_stopword) m_vecWordAV[cur].vecInvertList.push_back(p);
    if (!m_vecWordAV[prev].is_stopword) {
      Add(cur, m_vecWordAV[prev].vecRV);
      if (i + 1 < nCount && IsQuotation(m_vecWordAV[cur].pos)) {
        int next = -1;
        GetWord(sLine, nCount, result, i + 1, sWord, next);
        Add(next, m_vecWordAV[prev].vecRV);  // the word before a quote sees past it
      }
    }
    if (!m_vecWordAV[cur].is_stopword) {
      Add(prev, m_vecWordAV[cur].vecLV);
      if (i >= 3 && p >= 3 && IsCurrent(p - 2) && IsQuotation(m_vecWordAV[prev].pos)) {
        Add(IdAt(p - 2), m_vecWordAV[cur].vecLV);  // the word after a quote too
      }
    }
    prev = cur;
  }
  return 1;
}

int CKeyWordFinder::Intersection(const std::vector<int>& vecPrevList,
                                 const std::vector<int>& vecNextList, int nDist,
                                 std::vector<int>& vecIntersectList) const {
  size_t a = 0;
  size_t b = 0;
  while (a < vecPrevList.size() && b < vecNextList.size()) {
    const int target = vecPrevList[a] + nDist;
    if (vecNextList[b] > target) {
      ++a;
    } else if (vecNextList[b] < target) {
      ++b;
    } else {
      vecIntersectList.push_back(vecPrevList[a]);
      ++a;
      ++b;
    }
  }
  return static_cast<int>(vecIntersectList.size());
}

bool CKeyWordFinder::IsSeed(const _tWordAV& candidate) const {
  return !candidate.is_stopword && candidate.freq > 1 && !IsSingleUnknownUnit(m_pStats, candidate) &&
         !OneOf(candidate.pos_id, kUnmergedPosIds);
}

bool CKeyWordFinder::IsPartner(const _tWordAV& seed, const _word_freq& neighbour) const {
  const _tWordAV& other = m_vecWordAV[neighbour.handle];
  const double f = neighbour.freq;
  if (other.is_stopword || neighbour.freq <= 1) return false;
  if (f < 0.5 * seed.freq && f < 0.5 * other.freq) return false;
  if (other.vecLV.size() + other.vecRV.size() < 4) return false;
  return !IsSingleUnknownUnit(m_pStats, other) && !OneOf(other.pos_id, kUnmergedPosIds);
}

int CKeyWordFinder::GenerateNewWordList() {
  if (m_bRanked) return static_cast<int>(m_vecNewWordInfo.size());
  if (m_vecWordAV.size() > kLargeCandidateCount) {
    WriteLog("Start GenerateNewWordList \xb4\xca\xb4\xae=" +  // 词串=
                 std::to_string(m_vecWordAV.size()),
             nullptr);
  }
  // Merges append candidates: the size is read again on every pass, and the
  // neighbour lists are copied before merging from them.
  for (size_t i = 0; i < m_vecWordAV.size(); ++i) {
    if (!IsSeed(m_vecWordAV[i])) continue;
    const int seed = static_cast<int>(i);
    const std::vector<_word_freq> left = m_vecWordAV[i].vecLV;
    for (const _word_freq& e : left) {
      if (IsPartner(m_vecWordAV[i], e)) SetNewWord(e.handle, seed, e.freq);
    }
    const std::vector<_word_freq> right = m_vecWordAV[i].vecRV;
    for (const _word_freq& e : right) {
      if (IsPartner(m_vecWordAV[i], e)) SetNewWord(seed, e.handle, e.freq);
    }
  }
  return static_cast<int>(m_vecNewWordInfo.size());
}

bool CKeyWordFinder::IsCommon(const std::string& word) const {
  const double total = m_pUnigram != nullptr ? m_pUnigram->GetTotalFreq() : 0.0;
  if (total <= 0.0 || m_pStats == nullptr) return false;
  return m_pStats->GetUniProb(word.c_str()) > kRareFreq / total;
}

bool CKeyWordFinder::IsRefusedPair(const _tWordAV& left, const _tWordAV& right) const {
  if (Initial(right.pos, "ad") && Initial(left.pos, "v")) return true;
  if (Initial(right.pos, "qn") && Initial(left.pos, "m")) return true;
  if (Initial(left.pos, "t") && Initial(right.pos, "t")) return true;
  return OneOf(left.pos_id, kRareLeftPosIds) &&
         (OneOf(right.pos_id, kRareRightPosIds) || Initial(right.pos, "ad")) &&
         (IsCommon(left.word) || IsCommon(right.word));
}

_tWordAV CKeyWordFinder::NewWord(const _tWordAV& left, const _tWordAV& right, int nFreq) const {
  _tWordAV word(left.word + right.word, kNewWordPos, kNewWordPosId);
  const double f = nFreq;
  word.freq = nFreq;
  word.weight = f / right.freq * right.weight + f / left.freq * left.weight;
  word.is_stopword = false;
  word.is_freq_bigram =
      m_pStats != nullptr && m_pStats->IsFreqAssociate(left.word.c_str(), right.word.c_str());
  word.unit_count = left.unit_count + right.unit_count;
  Intersection(left.vecInvertList, right.vecInvertList, left.unit_count, word.vecInvertList);
  return word;
}

void CKeyWordFinder::AddNewWordNeighbours(_tWordAV& word) const {
  const int size = static_cast<int>(GetPositionCount());
  const auto quotation = [this](int position) { return IsQuotation(m_vecWordAV[IdAt(position)].pos); };
  for (const int p : word.vecInvertList) {
    if (IsCurrent(p - 1)) {
      Add(IdAt(p - 1), word.vecLV);
      if (p - 1 > 1 && IsCurrent(p - 2) && quotation(p - 1)) Add(IdAt(p - 2), word.vecLV);
    }
    const int after = p + word.unit_count;
    if (after < size) {
      Add(IdAt(after), word.vecRV);
      if (after + 1 < size && quotation(after)) Add(IdAt(after + 1), word.vecRV);
    }
  }
}

int CKeyWordFinder::SetNewWord(int nPrev, int nNext, int nFreq) {
  const _tWordAV& left = m_vecWordAV[nPrev];
  const _tWordAV& right = m_vecWordAV[nNext];
  const std::string joined = left.word + right.word;
  if (IsKnownWord(m_pStats, joined.c_str())) return 0;
  if (left.unit_count + right.unit_count > kMaxUnits) return 0;
  if (IsRefusedPair(left, right)) return 0;
  // The trie cannot tell longer strings apart; such a pair is not merged.
  if (joined.size() > static_cast<size_t>(CTrie::kMaxWordLen)) return 0;
  // Registered before the position test, so a refused string stays refused.
  if (m_trie->AddTrie(joined.c_str()) == 2) return 0;
  _tWordAV word = NewWord(left, right, nFreq);
  if (word.vecInvertList.empty()) return 0;
  AddNewWordNeighbours(word);
  const int index = AddCandidate(std::move(word));
  if (index >= 0) m_vecNewWordInfo.push_back(m_vecWordAV[index]);
  return 0;
}

void CKeyWordFinder::Score(_tWordAV& r, bool bNewWordExtract) const {
  if (!IsScorable(r)) {
    r.weight = 0.0;
    return;
  }
  AddContextEntropy(r);
  r.weight *= r.unit_count;
  CorrectLength(r);
  CorrectTag(m_pStats, r);
  if (r.is_freq_bigram && bNewWordExtract) r.weight *= 0.1;
}

bool CKeyWordFinder::IsExist(std::vector<_tWordAV>& vecWord, int nCurIndex) const {
  const std::string& word = vecWord[nCurIndex].word;
  return std::any_of(vecWord.begin(), vecWord.begin() + nCurIndex,
                     [&word](const _tWordAV& r) { return r.word.find(word) != std::string::npos; });
}

bool CKeyWordFinder::IsFilteredOut(std::vector<_tWordAV>& vecWordAV, size_t nIndex,
                                   size_t nRemaining) const {
  const _tWordAV& r = vecWordAV[nIndex];
  if (nIndex + 1 + nRemaining > 1 && (r.vecLV.size() <= 1 || r.vecRV.size() <= 1)) return true;
  if (r.unit_count > 1 && IsExist(vecWordAV, static_cast<int>(nIndex))) return true;
  return r.weight < 1.0;
}

void CKeyWordFinder::Filter(std::vector<_tWordAV>& vecWordAV) const {
  int counters[kGroupCount] = {};
  size_t kept = 0;
  const size_t size = vecWordAV.size();
  for (size_t next = 0; next < size; ++next) {
    if (next != kept) vecWordAV[kept] = std::move(vecWordAV[next]);
    if (IsFilteredOut(vecWordAV, kept, size - next - 1)) continue;
    _tWordAV& r = vecWordAV[kept++];
    const int group = GroupOf(r.pos_id);
    if (group < 0) continue;
    const int n = ++counters[group];
    if (n > 1) r.weight /= n - 0.8;
  }
  vecWordAV.resize(kept, _tWordAV("", "", 0));
}

int CKeyWordFinder::ComputeKeyWord(std::vector<_tWordAV>& vecWordAV, bool bNewWordExtract) {
  for (_tWordAV& r : vecWordAV) Score(r, bNewWordExtract);
  SortByWeight(vecWordAV);
  Filter(vecWordAV);
  SortByWeight(vecWordAV);
  return 1;
}

const char* CKeyWordFinder::GenerateResultString(bool bArgumentOutput, int nMaxLim,
                                                 std::vector<_tWordAV>& vecWordAV) {
  m_sLine.clear();
  const unsigned int limit = static_cast<unsigned int>(nMaxLim);
  for (size_t k = 0; k < vecWordAV.size() && (nMaxLim == -1 || k <= limit); ++k) {
    const _tWordAV& r = vecWordAV[k];
    m_sLine += r.word;
    if (bArgumentOutput) {
      const int n = std::snprintf(nullptr, 0, "/%s/%.2lf", r.pos.c_str(), r.weight);
      std::string entry(static_cast<size_t>(n) + 1, '\0');
      std::snprintf(&entry[0], entry.size(), "/%s/%.2lf", r.pos.c_str(), r.weight);
      m_sLine.append(entry, 0, static_cast<size_t>(n));
    }
    m_sLine += "  ";
  }
  return m_sLine.c_str();
}

const char* CKeyWordFinder::GetKeyWordList(bool bArgumentOutput, int nMaxLim) {
  return GenerateResultString(bArgumentOutput, nMaxLim, *GetKeyWordListE());
}

const char* CKeyWordFinder::GetNewWordList(bool bArgumentOutput, int nMaxLim) {
  return GenerateResultString(bArgumentOutput, nMaxLim, *GetNewWordListE());
}

std::vector<_tWordAV>* CKeyWordFinder::GetKeyWordListE() {
  ComputeKeyWord(m_vecWordAV, false);
  m_bRanked = true;
  return &m_vecWordAV;
}

std::vector<_tWordAV>* CKeyWordFinder::GetNewWordListE() {
  ComputeKeyWord(m_vecNewWordInfo, true);
  return &m_vecNewWordInfo;
}

unsigned long CKeyWordFinder::FingerPrint(std::vector<_tWordAV>& vecWordAV) const {
  if (vecWordAV.empty()) return 0;
  std::string joined;
  const size_t count = std::min(vecWordAV.size(), kFingerWords);
  for (size_t k = 0; k < count && joined.size() < kFingerLen; ++k) joined += vecWordAV[k].word;
  if (joined.size() > kFingerLen) joined.resize(kFingerLen);
  return CHash().Strhash(joined.c_str());
}

namespace {

void ExportNeighbours(FILE* fp, const std::vector<_word_freq>& list,
                      const std::vector<_tWordAV>& vecWordAV) {
  for (const _word_freq& e : list) {
    const bool known = e.handle >= 0 && static_cast<size_t>(e.handle) < vecWordAV.size();
    std::fprintf(fp, "%s(%d),", known ? vecWordAV[e.handle].word.c_str() : "", e.freq);
  }
}

}  // namespace

bool CKeyWordFinder::Export(std::vector<_tWordAV>& vecList, const char* sFilename,
                            std::vector<_tWordAV>& vecWordAV) const {
  const FilePtr fp = OpenFile(sFilename, "w");
  if (!fp) {
    std::printf("Error open %s\n", sFilename != nullptr ? sFilename : "");
    return false;
  }
  int number = 0;
  for (const _tWordAV& r : vecList) {
    std::fprintf(fp.get(),
                 "No:%d\tword=%s\tpos=%s\tfreq=%d\tLV=%d\tRV=%d\tis_stopword=%d\t"
                 "unit_count=%d\tweight=%.2lf\nInverted List(",
                 ++number, r.word.c_str(), r.pos.c_str(), r.freq, static_cast<int>(r.vecLV.size()),
                 static_cast<int>(r.vecRV.size()), r.is_stopword ? 1 : 0, r.unit_count, r.weight);
    for (const int p : r.vecInvertList) std::fprintf(fp.get(), "%d,", p);
    std::fputs(")\nLV(", fp.get());
    ExportNeighbours(fp.get(), r.vecLV, vecWordAV);
    std::fputs(")\nRV(", fp.get());
    ExportNeighbours(fp.get(), r.vecRV, vecWordAV);
    std::fputs(")\n", fp.get());
  }
  std::fputs(")\n", fp.get());
  return true;
}
