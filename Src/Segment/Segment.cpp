#include "Segment/Segment.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "Utility/Bigram.h"
#include "Utility/Unigram.h"

namespace {

// Add-constants of the bigram and unigram terms.
constexpr double kBigramAdd = 0.00001;
constexpr double kUnigramAdd = 0.5;

// The starting score of every word: the double whose eight bytes are 0xC0.
double InitialScore() {
  double score;
  memset(&score, 0xC0, sizeof score);
  return score;
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

double CSegment::TransitionLogProb(const word_t& w, const word_t& n) const {
  const double lambda = m_dSmoothingArg;
  const double bigram = m_pBigram->GetFreq(w.handle, n.handle);
  const double p =
      lambda * (bigram + kBigramAdd) / (m_dTotalItem * kBigramAdd + w.value) +
      (1 - lambda) * (n.value + kUnigramAdd) / (m_dTotalItem * kUnigramAdd + m_dTotalFreq);
  return log(p);
}

int CSegment::BiSegment(word_t** lattice, int rowCount, int* rowSizes, int capacity) {
  if (lattice == nullptr || rowSizes == nullptr || rowCount < 1 || capacity < 1 ||
      lattice[0] == nullptr || rowSizes[0] < 1) {
    m_nWordCount = 0;
    return 0;
  }
  // Score and successor of every word, row by row.
  std::vector<std::unique_ptr<double[]>> scores(rowCount);
  std::vector<std::unique_ptr<int[]>> successors_owned(rowCount);
  std::vector<int*> successors(rowCount, nullptr);
  const double initial = InitialScore();
  for (int r = 0; r < rowCount; ++r) {
    if (lattice[r] == nullptr || rowSizes[r] <= 0) continue;
    scores[r].reset(new double[rowSizes[r]]);
    successors_owned[r].reset(new int[rowSizes[r]]());
    successors[r] = successors_owned[r].get();
    for (int k = 0; k < rowSizes[r]; ++k) scores[r][k] = initial;
  }
  const int last = rowCount - 1;
  if (successors[last] != nullptr) {
    lattice[last][0].value = m_pUnigram->GetFreq(lattice[last][0].handle);
    scores[last][0] = 0;
    successors[last][0] = -1;
  }
  for (int r = last - 1; r >= 0; --r) {
    for (int k = 0; successors[r] != nullptr && k < rowSizes[r]; ++k) {
      word_t& w = lattice[r][k];
      w.value = m_pUnigram->GetFreq(w.handle);
      const int next = w.end + 1;
      if (next <= r || next >= rowCount || successors[next] == nullptr) continue;
      bool chosen = false;
      for (int j = 0; j < rowSizes[next]; ++j) {
        const double candidate = TransitionLogProb(w, lattice[next][j]) + scores[next][j];
        if (!chosen || candidate > scores[r][k]) {
          scores[r][k] = candidate;
          successors[r][k] = j;
          chosen = true;
        }
      }
    }
  }
  CopyPath(lattice, rowCount, rowSizes, capacity, successors.data());
  return m_nWordCount;
}

void CSegment::CopyPath(word_t** lattice, int rowCount, int* rowSizes, int capacity,
                        int** successors) {
  free(m_pWords);
  m_pWords = static_cast<word_t*>(malloc(sizeof(word_t) * capacity));
  for (int i = 0; i < capacity; ++i) m_pWords[i] = word_t();
  m_pWords[0] = lattice[0][0];
  m_nWordCount = 1;
  int row = 0, index = 0;
  // Successor indexes only point into existing rows; the walk still checks
  // every step so that a malformed lattice can never take it out of bounds.
  while (successors[row] != nullptr && successors[row][index] >= 0 && m_nWordCount < capacity) {
    const int next_row = lattice[row][index].end + 1;
    const int next_index = successors[row][index];
    if (next_row <= row || next_row >= rowCount || successors[next_row] == nullptr ||
        next_index >= rowSizes[next_row]) {
      break;
    }
    row = next_row;
    index = next_index;
    m_pWords[m_nWordCount++] = lattice[row][index];
  }
}
