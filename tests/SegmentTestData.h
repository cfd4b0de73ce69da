// SegmentTestData.h: what the segmentation tests share: the shipped
// character type table, a small core dictionary built in memory with the
// pseudo-words whose handles the segmenter uses, and readable atom listings.
#ifndef ZIVOR_TESTS_SEGMENTTESTDATA_H_
#define ZIVOR_TESTS_SEGMENTTESTDATA_H_

#include <memory>
#include <string>
#include <vector>

#include "Utility/Charset.h"
#include "Utility/Global.h"
#include "Utility/PDAT.h"

namespace segtest {

// Loads Data/charset.type and builds the dictionary from the word list (UTF-8
// here, GBK in the dictionary; handles 1, 2, ... in list order). Sets the
// pseudo-word globals (gSent_StartID ... gOneID) from the dictionary and
// resets them to -1 when it dies, so one object per test fixture.
class SegmentData {
 public:
  SegmentData();
  ~SegmentData();
  SegmentData(const SegmentData&) = delete;
  SegmentData& operator=(const SegmentData&) = delete;

  // False when the shipped character type table could not be loaded.
  bool ok() const { return ok_; }
  CCharset* charset() const { return charset_.get(); }
  CPDAT* dict() const { return dict_.get(); }
  // The handle of a word given in UTF-8 (-1 when absent).
  int Handle(const std::string& utf8) const;
  // The dictionary's words, UTF-8, in handle order from 1.
  static const std::vector<std::string>& Words();

 private:
  std::unique_ptr<CCharset> charset_;
  std::unique_ptr<CPDAT> dict_;
  bool ok_ = false;
};

// The class an atom's handle stands for: "m", "t", "x" (numbers, times,
// letter strings), "wp" (punctuation run), "LD" "RD" "LS" "RS" (quotation
// marks), "begin" and "end", "word" for any other dictionary handle, "-" for
// none. Pseudo-word classes are checked first.
std::string HandleClass(int handle);

// "TEXT/CLASS:TYPE" (TEXT in UTF-8) for each atom of the sentence, start and
// end atoms left out.
std::vector<std::string> Describe(const std::string& gbkText, const word_t* atoms, int count);

}  // namespace segtest

#endif  // ZIVOR_TESTS_SEGMENTTESTDATA_H_
