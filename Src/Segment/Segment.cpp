#include "Segment/Segment.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Utility/Bigram.h"
#include "Utility/Unigram.h"

namespace {

// Add-constants of the bigram and unigram terms (deliberately different).
constexpr double kBigramAdd = 0.00001;
constexpr double kUnigramAdd = 0.5;

// The starting score of every word: the double whose eight bytes are 0xC0
// (about -8577.5), kept by words whose successor row is empty.
double InitialScore() {
  double score;
  memset(&score, 0xC0, sizeof score);
  return score;
}

int RowSize(const word_t* const* lattice, const int* rowSizes, int row) {
  return lattice[row] != nullptr && rowSizes[row] > 0 ? rowSizes[row] : 0;
}

}  // namespace

CSegment::CSegment(CPDAT* coreDict, CUnigram* unigram, CBigram* bigram)
    : m_pCoreDict(coreDict),
      m_pUnigram(unigram),
      m_pBigram(bigram),
      m_dSmoothingArg(0.95),
      m_dTotalFreq(unigram != nullptr ? unigram->GetTotalFreq() : 0),
      m_dTotalItem(unigram != nullptr ? unigram->GetItemCount() : 0) {}

CSegment::~CSegment() { free(m_pWords); }

double CSegment::Freq(int handle) const {
  return m_pUnigram != nullptr ? m_pUnigram->GetFreq(handle) : 0;
}

double CSegment::PairFreq(int handle1, int handle2) const {
  return m_pBigram != nullptr ? m_pBigram->GetFreq(handle1, handle2) : 0;
}

double CSegment::UnigramTerm(double freq) const {
  return (1 - m_dSmoothingArg) * (freq + kUnigramAdd) /
         (m_dTotalItem * kUnigramAdd + m_dTotalFreq);
}

double CSegment::TransitionLogProb(int pairFreq, double pairBase, double unigramTerm) const {
  // The same operations, in the same order, as
  //   ln(lambda (f(w, n) + a) / (V a + F(w)) + (1 - lambda) (F(n) + b) / (V b + N))
  // with the parts that depend on one word alone computed once per word.
  return log(m_dSmoothingArg * (pairFreq + kBigramAdd) / pairBase + unigramTerm);
}

int CSegment::BiSegment(word_t** lattice, int rowCount, int* rowSizes, int capacity) {
  if (lattice == nullptr || rowSizes == nullptr || rowCount < 1 || capacity < 1 ||
      RowSize(lattice, rowSizes, 0) == 0) {
    m_nWordCount = 0;
    return 0;
  }
  const int total = LayOutWords(lattice, rowCount, rowSizes);
  PrefetchPairs(total);
  ComputeWordTerms(lattice, rowSizes);
  std::fill_n(m_score.begin(), total, InitialScore());
  std::fill_n(m_next.begin(), total, 0);

  const int last = rowCount - 1;
  if (RowSize(lattice, rowSizes, last) > 0) {
    m_score[m_offsets[last]] = 0;
    m_next[m_offsets[last]] = -1;
  }
  // Words in reverse order of their rows: every successor is scored before
  // the words that lead to it.
  for (int self = total - 1; self >= 0; --self) {
    const int handle = m_handles[self];
    const double base = m_pairBase[self];
    const int first = m_successors[self].first;
    const int count = m_successors[self].count;
    for (int j = 0; j < count; ++j) {
      const int n = first + j;
      const double candidate =
          TransitionLogProb(PairFreq(handle, m_handles[n]), base, m_unigramTerm[n]) + m_score[n];
      // The first successor is taken as it is; a later one only when it is
      // strictly better, so ties keep the earlier word and NaN never wins.
      if (j == 0 || candidate > m_score[self]) {
        m_score[self] = candidate;
        m_next[self] = j;
      }
    }
  }
  CopyPath(lattice, rowCount, rowSizes, capacity, m_offsets.data(), m_next.data());
  return m_nWordCount;
}

int CSegment::LayOutWords(word_t** lattice, int rowCount, const int* rowSizes) {
  m_offsets.resize(static_cast<size_t>(rowCount));
  m_rows.clear();
  int total = 0;
  for (int r = 0; r < rowCount; ++r) {
    m_offsets[r] = total;
    const int size = RowSize(lattice, rowSizes, r);
    if (size > 0) m_rows.push_back(r);
    total += size;
  }
  const size_t words = static_cast<size_t>(total);
  if (m_score.size() < words) {
    m_score.resize(words);
    m_next.resize(words);
    m_handles.resize(words);
    m_successors.resize(words);
    m_pairBase.resize(words);
    m_unigramTerm.resize(words);
  }
  const int last = rowCount - 1;
  for (const int r : m_rows) {
    const int size = rowSizes[r];
    for (int k = 0; k < size; ++k) {
      const word_t& w = lattice[r][k];
      const size_t i = static_cast<size_t>(m_offsets[r] + k);
      m_handles[i] = w.handle;
      if (m_pUnigram != nullptr) m_pUnigram->Prefetch(w.handle);
      // Words ending at the last row or before their own start lead nowhere.
      const bool leads = w.end >= r && w.end < last;
      m_successors[i] = leads ? Successors{m_offsets[w.end + 1], RowSize(lattice, rowSizes, w.end + 1)}
                              : Successors{0, 0};
    }
  }
  return total;
}

void CSegment::ComputeWordTerms(word_t** lattice, const int* rowSizes) {
  for (const int r : m_rows) {
    word_t* row = lattice[r];
    const int first = m_offsets[r];
    for (int k = 0; k < rowSizes[r]; ++k) {
      word_t& w = row[k];
      w.value = Freq(w.handle);
      const size_t i = static_cast<size_t>(first + k);
      m_pairBase[i] = m_dTotalItem * kBigramAdd + w.value;
      m_unigramTerm[i] = UnigramTerm(w.value);
    }
  }
}

void CSegment::PrefetchPairs(int total) const {
  if (m_pBigram == nullptr) return;
  // In the order the decoding pass reads them.
  for (int self = total - 1; self >= 0; --self) {
    const Successors& next = m_successors[self];
    for (int n = next.first; n < next.first + next.count; ++n) {
      m_pBigram->Prefetch(m_handles[self], m_handles[n]);
    }
  }
}

bool CSegment::ReservePath(int capacity) {
  if (capacity > m_nPathCapacity || m_pWords == nullptr) {
    free(m_pWords);
    m_pWords = static_cast<word_t*>(malloc(sizeof(word_t) * static_cast<size_t>(capacity)));
    m_nPathCapacity = m_pWords != nullptr ? capacity : 0;
    m_nPathDirty = m_nPathCapacity;  // nothing in a new block is blank yet
    if (m_pWords == nullptr) return false;
  }
  // Only the last path's words were written (callers rewrite them in place,
  // merging leaves copies behind the new count, nothing lies after it), so
  // blanking them leaves the whole array blank, as a fresh one is.
  std::fill_n(m_pWords, m_nPathDirty, word_t());
  return true;
}

void CSegment::CopyPath(word_t** lattice, int rowCount, const int* rowSizes, int capacity,
                        const int* offsets, const int* next) {
  m_nWordCount = 0;
  if (!ReservePath(capacity)) return;
  m_pWords[m_nWordCount++] = lattice[0][0];
  // Every step moves to a later row, so the walk ends; it also stops at a
  // successor row that is empty or outside the lattice.
  int row = 0, index = 0;
  while (m_nWordCount < capacity && next[offsets[row] + index] >= 0) {
    const int end = lattice[row][index].end;
    if (end < row || end >= rowCount - 1) break;
    const int next_row = end + 1;
    const int next_index = next[offsets[row] + index];
    if (next_index >= RowSize(lattice, rowSizes, next_row)) break;
    row = next_row;
    index = next_index;
    m_pWords[m_nWordCount++] = lattice[row][index];
  }
  m_nPathDirty = m_nWordCount;
}
