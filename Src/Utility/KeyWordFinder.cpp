#include "Utility/KeyWordFinder.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "API/ZIVORState.h"
#include "System/MainSystem.h"
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

bool IsKnownWord(const char* word) { return g_pZIVOR != nullptr && g_pZIVOR->IsWord(word); }

double EntropyTerm(const char* word) {
  const double p = g_pZIVOR != nullptr ? g_pZIVOR->GetUniProb(word) : 0.0;
  return p > 0.0 ? -p * std::log(p) : 0.0;
}

bool IsQuotation(const std::string& pos) { return strncasecmp(pos.c_str(), "wy", 2) == 0; }

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

CKeyWordFinder::CKeyWordFinder(CUnigram* pUnigram)
    : m_trie(std::make_unique<CTrie>()), m_pUnigram(pUnigram) {}

CKeyWordFinder::~CKeyWordFinder() = default;

void CKeyWordFinder::Reset() {
  m_vecWordAV.clear();
  m_vecNewWordInfo.clear();
  m_trie = std::make_unique<CTrie>();
  m_vecEntryIndex.clear();
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
  candidate.weight = EntropyTerm(sWord);
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
  if (!IsKnownWord(sWord) && (r.sPOS[0] == 'm' || r.sPOS[0] == 't')) {
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
  if (m_vecWordIDList.size() > kMaxPositions) {
    char message[128];
    std::snprintf(message, sizeof(message),
                  "\xb4\xa6\xc0\xed\xb5\xc4\xb4\xca\xd7\xdc\xca\xfd%d\xa3\xac\xb3\xac\xb9\xfd%d,"
                  "\xd1\xb5\xc1\xb7\xb2\xbb\xd4\xd9\xbc\xcc\xd0\xf8",  // 处理的词总数%d，超过%d,训练不再继续
                  static_cast<int>(m_vecWordIDList.size()), static_cast<int>(kMaxPositions));
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
    const int p = static_cast<int>(m_vecWordIDList.size()) - 1;
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
      if (i >= 3 && p >= 3 && IsQuotation(m_vecWordAV[prev].pos)) {
        Add(m_vecWordIDList[p - 2], m_vecWordAV[cur].vecLV);  // the word after a quote too
      }
    }
    prev = cur;
  }
  return 1;
}
