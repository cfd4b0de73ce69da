// SegmentTestData.h: what the segmentation tests share: the shipped
// character types, a small core dictionary with the pseudo-words, frequency
// tables built from counts, and readable listings of atoms and paths.
#ifndef ZIVOR_TESTS_SEGMENTTESTDATA_H_
#define ZIVOR_TESTS_SEGMENTTESTDATA_H_

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Utility/Bigram.h"
#include "Utility/Charset.h"
#include "Utility/Global.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"

namespace segtest {

using Counts = std::vector<std::pair<std::string, int>>;  // UTF-8 keys

// Loads Data/charset.type, builds the dictionary from Words() (handles 1, 2,
// ... in order) and sets the pseudo-word globals from it; resets them to -1
// when it dies. One object per test.
class SegmentData {
 public:
  SegmentData();
  ~SegmentData();
  SegmentData(const SegmentData&) = delete;
  SegmentData& operator=(const SegmentData&) = delete;

  bool ok() const { return ok_; }  // false without the shipped type table
  CCharset* charset() const { return charset_.get(); }
  CPDAT* dict() const { return dict_.get(); }
  int Handle(const std::string& utf8) const;  // -1 when absent
  static const std::vector<std::string>& Words();  // UTF-8

  // Imports the tables: every word gets a unigram line (count 0 unless
  // given) and the last word a second one, since the table reads only
  // handles below its line count. Returns the sum of the unigram lines.
  long long LoadTables(const Counts& counts, const Counts& pairs, CUnigram* unigram,
                       CBigram* bigram) const;

 private:
  std::unique_ptr<CCharset> charset_;
  std::unique_ptr<CPDAT> dict_;
  bool ok_ = false;
};

// The atoms between the start and end atoms as "TEXT/CLASS:TYPE" joined by
// blanks, TEXT in UTF-8, CLASS one of m t x wp LD RD LS RS end (the handle's
// pseudo-word), word (another dictionary handle) or - (none).
std::string Describe(const std::string& gbkText, const word_t* atoms, int count);

}  // namespace segtest

#endif  // ZIVOR_TESTS_SEGMENTTESTDATA_H_
