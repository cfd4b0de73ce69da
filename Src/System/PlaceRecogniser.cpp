#include "System/PlaceRecogniser.h"

#include <algorithm>

#include "System/PlaceModel.h"

CPlaceRecogniser::CPlaceRecogniser(const CPlaceModel& model, double vocabulary)
    : m_model(model),
      m_tagger(&model.Roles(), &model.Context(), vocabulary, kPlaceRoleOther, true) {}

void CPlaceRecogniser::Find(const word_t* words, int count, unsigned char mergedType) {
  m_mergedType = mergedType;
  m_found.clear();
  m_merged = false;
  if (words == nullptr || count < 3 || !MayHoldPlace(words, count)) return;
  m_found.assign(words, words + count);
  m_tagger.Tagging(m_found.data(), count);
  m_model.Automaton().MaxPR(m_found.data(), &count, gUnknown_ns_ID);
  m_merged = static_cast<size_t>(count) < m_found.size();
  m_found.resize(static_cast<size_t>(count));
  // The automaton leaves its accepting tag in the type of the words it
  // merged.
  for (word_t& word : m_found) {
    if (word.handle == gUnknown_ns_ID && word.type == CPlaceModel::kPlaceTag) {
      word.type = mergedType;
      word.POS_id = CPlaceModel::kPlaceTag;
    }
  }
}

bool CPlaceRecogniser::MayHoldPlace(const word_t* words, int count) const {
  constexpr unsigned kFirst = CPlaceModel::PieceBit(kPlaceRoleFirst);
  constexpr unsigned kMiddle = CPlaceModel::PieceBit(kPlaceRoleMiddle);
  constexpr unsigned kLast = CPlaceModel::PieceBit(kPlaceRoleLast);
  bool open = false;  // a first piece and inner pieces may end at the word before
  for (int i = 0; i < count; ++i) {
    const unsigned roles = m_model.PieceRoles(words[i].handle);
    if (open && (roles & kLast) != 0) return true;
    open = (roles & kFirst) != 0 || (open && (roles & kMiddle) != 0);
  }
  return false;
}

bool CPlaceRecogniser::IsPlace(size_t i) const {
  return m_found[i].handle == gUnknown_ns_ID && m_found[i].type == m_mergedType &&
         m_found[i].POS_id == CPlaceModel::kPlaceTag;
}

size_t CPlaceRecogniser::CoveredRun(size_t i, const word_t& merged) const {
  if (m_found[i].start != merged.start) return 0;
  for (size_t k = i; k + 1 < m_found.size() && !IsPlace(k); ++k) {
    if (m_found[k].end == merged.end) return k - i + 1;
    if (m_found[k].end > merged.end) return 0;
  }
  return 0;
}

void CPlaceRecogniser::Claim(word_t* words, int* count) {
  if (!m_merged || words == nullptr || count == nullptr || *count < 3) return;
  const int n = *count;
  std::vector<word_t>& claimed = m_claimed;
  claimed.assign(1, words[0]);
  int j = 1;  // the merged word over the found word i, markers aside
  for (size_t i = 1; i + 1 < m_found.size();) {
    while (j < n - 1 && words[j].end <= m_found[i].start) ++j;
    const size_t run = IsPlace(i) || j >= n - 1 ? 0 : CoveredRun(i, words[j]);
    claimed.push_back(run > 0 ? words[j] : m_found[i]);
    i += run > 0 ? run : 1;
  }
  claimed.push_back(words[n - 1]);
  std::copy(claimed.begin(), claimed.end(), words);
  *count = static_cast<int>(claimed.size());
}
