// MiniData.h: a complete, small data directory for tests that initialise the
// library.
//
// The text sources live in tests/data/mini (UTF-8, converted to GBK here);
// every binary is built from them with zivor-data, so the set always matches
// the current file formats. The set is built once per test program and then
// copied, so asking for many directories is cheap.
#ifndef ZIVOR_TESTS_MINIDATA_H_
#define ZIVOR_TESTS_MINIDATA_H_

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "TestUtil.h"

namespace testutil {

// The switches of the Configure.xml written beside the data.
struct MiniDataOptions {
  bool person = true;      // "Person"
  bool tagger = true;      // "Tagger"
  bool user_dict = false;  // "UserDict" (UserDict.pdat is always built)
  std::string tag_set = "ZIVOR.map";  // "TagSet"; empty leaves the key out
  std::string pos_delimiter = "/";
  std::string word_boundary = "  ";
  // Links to the shipped code-translation tables, which cover whole
  // character sets, so that the set reads UTF-8, BIG5 and GBKC as well.
  bool code_tables = false;
};

// The Configure.xml text for the options.
std::string MiniConfigure(const MiniDataOptions& options = {});

// Creates dir/Data holding Configure.xml, the four tag maps, charset.type and
// every binary the library loads, so that ZIVOR_Init(dir, 0) succeeds. Returns
// false (and prints why on standard error) when the set cannot be built.
bool BuildMiniData(const std::string& dir, const MiniDataOptions& options = {});

// tests/data/mini in the source tree.
std::string MiniSourceDir();

// A test of the initialised library: each test gets a fresh mini data set
// and its own working directory, which receives the day's log. ZIVOR_Exit
// runs after every test.
class LibraryTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  // The configuration the data set is built with.
  virtual MiniDataOptions Options() const { return {}; }

  // The directory that holds Data, and a file in Data.
  const std::string& Dir() const { return data_.path(); }
  std::string DataFile(const std::string& name) const { return Dir() + "/Data/" + name; }
  bool Init() const;
  // The messages logged since the last call, without their time stamps
  // (each followed by a line feed); the log is emptied.
  std::string TakeLog() const;

  TempDir data_;
  TempDir work_;

 private:
  std::string old_cwd_;
};

// A test of the library on a copy of the shipped Data (made once per suite,
// since initialisation writes its new-word log there); each test runs in a
// scratch working directory, which receives the day's log. ZIVOR_Exit runs
// after every test.
class ShippedLibraryTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite();
  void SetUp() override;
  void TearDown() override;
  // Exits the library, if it was initialised, and initialises it again.
  static bool Init(int encode);

  TempDir work_;

 private:
  static TempDir* data_;
  std::string old_cwd_;
};

// One word of an analysis through the exported calls: the caller's bytes
// and the tag.
struct ApiWord {
  std::string text, tag;
  bool operator==(const ApiWord& o) const { return text == o.text && tag == o.tag; }
};
std::ostream& operator<<(std::ostream& out, const ApiWord& w);

// The words of ZIVOR_ParagraphProcessA on `text`, whose records must follow
// each other without gap or overlap from byte `first` to the end of the text.
std::vector<ApiWord> ApiWords(const std::string& text, bool userDict = true, size_t first = 0);

}  // namespace testutil

#endif  // ZIVOR_TESTS_MINIDATA_H_
