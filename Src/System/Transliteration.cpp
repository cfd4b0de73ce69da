#include "System/Transliteration.h"

#include <algorithm>
#include <cmath>

#include "Utility/PDAT.h"
#include "Utility/POS.h"

namespace {

constexpr int kCharBytes = 2;
constexpr char kMiddleDot[] = "\xa1\xa4";  // ·
// Add-half smoothing of the character probabilities.
constexpr double kAdd = 0.5;

int CodeAt(const char* text) {
  return static_cast<unsigned char>(text[0]) * 256 + static_cast<unsigned char>(text[1]);
}

}  // namespace

CTransliteration::CTransliteration(const CPDAT* dict) : m_pDict(dict) {}

namespace {

struct Counts {
  long name = 0, place = 0, all = 0, name_last = 0, place_last = 0;
};

// Adds the records of one handle; false for a tag that is not a count of
// tr.char or a count below zero.
bool AddRecords(const POS_info* records, int n, Counts* counts) {
  for (int k = 0; k < n; ++k) {
    const long freq = records[k].freq;
    if (freq < 0) return false;
    switch (records[k].POS_id) {
      case CTransliteration::kNameCount: counts->name += freq; break;
      case CTransliteration::kPlaceCount: counts->place += freq; break;
      case CTransliteration::kAllCount: counts->all += freq; break;
      case CTransliteration::kNameLastCount: counts->name_last += freq; break;
      case CTransliteration::kPlaceLastCount: counts->place_last += freq; break;
      default: return false;
    }
  }
  return true;
}

float LogShare(long count, long total, double v) {
  return static_cast<float>(std::log((count + kAdd) / (static_cast<double>(total) + v)));
}

}  // namespace

bool CTransliteration::Load(const char* path) {
  CPOS table;
  if (m_pDict == nullptr || !table.Load(path)) return false;
  Counts total;
  long seen = 0;  // characters with a count
  for (int h = 0; h <= table.GetBound(); ++h) {
    int n = 0;
    const POS_info* records = table.GetPOS(h, &n);
    Counts counts;
    if (!AddRecords(records, n, &counts)) return false;
    total.name += counts.name;
    total.place += counts.place;
    total.all += counts.all;
    total.name_last += counts.name_last;
    total.place_last += counts.place_last;
    if (counts.all > 0) ++seen;
  }
  if (total.name + total.place <= 0) return false;
  const double v = kAdd * static_cast<double>(seen);
  std::vector<CharScore> scores(kCodes);
  std::bitset<kCodes> members;
  for (int code = kFirstCode; code <= kLastCode; ++code) {
    int n = 0;
    const POS_info* records = table.GetPOS(m_pDict->Find(code), &n);
    Counts c;
    AddRecords(records, n, &c);
    CharScore& score = scores[static_cast<size_t>(code - kFirstCode)];
    const double in = static_cast<double>(c.name + c.place);
    const double p_in = (in + kAdd) / (static_cast<double>(total.name + total.place) + v);
    const double p_all = (static_cast<double>(c.all) + kAdd) / (static_cast<double>(total.all) + v);
    members[static_cast<size_t>(code - kFirstCode)] = in >= kMinSeen && p_in >= kMinRatio * p_all;
    score.name = LogShare(c.name, total.name, v);
    score.place = LogShare(c.place, total.place, v);
    score.name_last = LogShare(c.name_last, total.name_last, v);
    score.place_last = LogShare(c.place_last, total.place_last, v);
  }
  if (members.none()) return false;
  m_members = members;
  m_scores.swap(scores);
  const double in = static_cast<double>(total.name + total.place);
  m_namePrior = std::log((total.name + kAdd) / (in + 2 * kAdd));
  m_placePrior = std::log((total.place + kAdd) / (in + 2 * kAdd));
  return true;
}

const CTransliteration::CharScore& CTransliteration::ScoreOf(int code) const {
  if (code < kFirstCode || code > kLastCode || m_scores.empty()) return m_none;
  return m_scores[static_cast<size_t>(code - kFirstCode)];
}

bool CTransliteration::IsTransliterationChar(int code) const {
  return code >= kFirstCode && code <= kLastCode && m_members[static_cast<size_t>(code - kFirstCode)];
}

int CTransliteration::PieceChars(const char* sentence, const word_t& word) const {
  if (word.start < 0 || word.end <= word.start || (word.end - word.start) % kCharBytes != 0) {
    return 0;
  }
  // A name the person recogniser merged is a piece only when it is a
  // transliteration itself.
  if (word.handle >= 0 && word.handle == gUnknown_nr_ID && word.type != kNameTag) return 0;
  for (int i = word.start; i < word.end; i += kCharBytes) {
    if (!IsTransliterationChar(CodeAt(sentence + i))) return 0;
  }
  return (word.end - word.start) / kCharBytes;
}

void CTransliteration::AddScores(const char* sentence, const word_t& word, double* name,
                                 double* place) const {
  double name_sum = 0, place_sum = 0;
  for (int i = word.start; i < word.end; i += kCharBytes) {
    const CharScore& score = ScoreOf(CodeAt(sentence + i));
    name_sum += score.name;
    place_sum += score.place;
  }
  *name += name_sum;
  *place += place_sum;
}

bool CTransliteration::IsMiddleDot(const char* sentence, const word_t& word) {
  return word.end - word.start == kCharBytes && sentence[word.start] == kMiddleDot[0] &&
         sentence[word.start + 1] == kMiddleDot[1];
}

bool CTransliteration::IsPlace(const char* sentence, const word_t& last, double name,
                               double place) const {
  const CharScore& final_char = ScoreOf(CodeAt(sentence + last.end - kCharBytes));
  return place + final_char.place_last + m_placePrior > name + final_char.name_last + m_namePrior;
}

void CTransliteration::Merge(const char* sentence, word_t* words, int* count) const {
  if (sentence == nullptr || words == nullptr || count == nullptr || *count < 3) return;
  const int n = *count;
  int out = 1;  // words kept so far (the start marker)
  int i = 1;
  while (i < n - 1) {
    // A middle dot joins two pieces.
    const auto joint = [&](int j) {
      return j > i && j + 1 < n - 1 && IsMiddleDot(sentence, words[j]);
    };
    int chars = 0, last = i - 1;
    for (int j = i; j < n - 1; ++j) {
      if (joint(j)) continue;
      const int piece = PieceChars(sentence, words[j]);
      if (piece == 0) break;
      chars += piece;
      last = j;
    }
    const bool name_alone =
        last == i && words[i].handle >= 0 && words[i].handle == gUnknown_nr_ID;
    if ((last > i || name_alone) && chars >= kMinChars) {
      double name = 0, place = 0;
      for (int j = i; j <= last; ++j) {
        if (!joint(j)) AddScores(sentence, words[j], &name, &place);
      }
      word_t word = words[i];
      word.end = words[last].end;
      if (IsPlace(sentence, words[last], name, place)) {
        word.handle = gUnknown_ns_ID;
      } else {
        word.handle = gUnknown_nr_ID;
        word.type = kNameTag;
      }
      words[out++] = word;
      i = last + 1;
    } else {
      // Words stay where they are until something merges (a copy onto
      // itself would only stall on its own stores).
      if (out != i) words[out] = words[i];
      ++out;
      ++i;
    }
  }
  words[out++] = words[n - 1];
  *count = out;
}
