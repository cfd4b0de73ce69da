#include "Segment/Segment.h"

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

double CSegment::TransitionLogProb(const word_t& w, const word_t& n) const {
  const double lambda = m_dSmoothingArg;
  const double p = lambda * (PairFreq(w.handle, n.handle) + kBigramAdd) /
                       (m_dTotalItem * kBigramAdd + w.value) +
                   (1 - lambda) * (n.value + kUnigramAdd) /
                       (m_dTotalItem * kUnigramAdd + m_dTotalFreq);
  return log(p);
}

int CSegment::BiSegment(word_t** lattice, int rowCount, int* rowSizes, int capacity) {
  if (lattice == nullptr || rowSizes == nullptr || rowCount < 1 || capacity < 1 ||
      RowSize(lattice, rowSizes, 0) == 0) {
    m_nWordCount = 0;
    return 0;
  }
  // Score and successor index of every word, row after row in one array.
  std::vector<int> offsets(rowCount);
  int total = 0;
  for (int r = 0; r < rowCount; ++r) {
    offsets[r] = total;
    total += RowSize(lattice, rowSizes, r);
  }
  std::vector<double> score(total, InitialScore());
  std::vector<int> next(total, 0);

  const int last = rowCount - 1;
  if (RowSize(lattice, rowSizes, last) > 0) {
    lattice[last][0].value = Freq(lattice[last][0].handle);
    score[offsets[last]] = 0;
    next[offsets[last]] = -1;
  }
  for (int r = last - 1; r >= 0; --r) {
    const int size = RowSize(lattice, rowSizes, r);
    for (int k = 0; k < size; ++k) {
      word_t& w = lattice[r][k];
      w.value = Freq(w.handle);
      if (w.end < r || w.end >= last) continue;  // no successor row
      const int nr = w.end + 1;
      const int self = offsets[r] + k;
      const int successors = RowSize(lattice, rowSizes, nr);
      for (int j = 0; j < successors; ++j) {
        const double candidate =
            TransitionLogProb(w, lattice[nr][j]) + score[offsets[nr] + j];
        // The first successor is taken as it is; a later one only when it is
        // strictly better, so ties keep the earlier word and NaN never wins.
        if (j == 0 || candidate > score[self]) {
          score[self] = candidate;
          next[self] = j;
        }
      }
    }
  }
  CopyPath(lattice, rowCount, rowSizes, capacity, offsets.data(), next.data());
  return m_nWordCount;
}

void CSegment::CopyPath(word_t** lattice, int rowCount, const int* rowSizes, int capacity,
                        const int* offsets, const int* next) {
  free(m_pWords);
  m_pWords = static_cast<word_t*>(malloc(sizeof(word_t) * static_cast<size_t>(capacity)));
  m_nWordCount = 0;
  if (m_pWords == nullptr) return;
  for (int i = 0; i < capacity; ++i) m_pWords[i] = word_t();
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
}
