// MainSystemFixture.h: the mini data set loaded into the shared resources
// that analysis instances borrow, for tests of CMainSystem.
#ifndef ZIVOR_TESTS_MAINSYSTEMFIXTURE_H_
#define ZIVOR_TESTS_MAINSYSTEMFIXTURE_H_

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "System/MainSystem.h"
#include "Utility/Charset.h"
#include "Utility/ContextStat.h"
#include "Utility/FSA.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"
#include "Utility/Unigram.h"
#include "Utility/Bigram.h"
#include "Utility/trie.h"

namespace testutil {

// Every resource of the mini data set, loaded once per test program. The
// user dictionary starts with the set's own user words.
struct MiniResources {
  CCharset charset;
  CPDAT core;
  CUnigram unigram;
  CBigram bigram;
  CPOS corePOS;
  CContextStat posContext;
  CPOSmap maps[4];
  CPOSmap* mapArray[4] = {&maps[0], &maps[1], &maps[2], &maps[3]};
  CPOS roles;
  CContextStat roleContext;
  CFSA fsa;
  CTrie userDict;
  bool ok = false;

  // Null when the set could not be built or loaded.
  static MiniResources* Get();

  // Sets the process-wide settings to the shipped defaults ("/", two blanks)
  // with the given switches and resolves the pseudo-word handles; then
  // creates an instance over the resources.
  struct Options {
    bool tagger = true;
    bool person = true;
    bool userDict = true;
    CTrie* ownUserDict = nullptr;  // instead of the set's user dictionary
    CPDAT* granDict = nullptr;
    CPOS* granPOS = nullptr;
    CPDAT* fieldDict = nullptr;
    CPOS* fieldPOS = nullptr;
  };
  std::unique_ptr<CMainSystem> NewSystem(const Options& options);
  std::unique_ptr<CMainSystem> NewSystem() { return NewSystem(Options()); }
};

// Text of a result of the instance in UTF-8.
std::string Utf8Result(const char* gbk);

// A dictionary and its tag lexicon built from "word tag count" lines (UTF-8).
struct SmallDict {
  CPDAT dict;
  CPOS pos;
  bool Build(const std::string& utf8Lines, const CPOSmap& map);
};

// A test with the mini resources loaded and one instance over them.
class MiniSystemTest : public ::testing::Test {
 protected:
  void SetUp() override {
    r_ = MiniResources::Get();
    ASSERT_NE(r_, nullptr);
    sys_ = r_->NewSystem();
  }

  MiniResources* r_ = nullptr;
  std::unique_ptr<CMainSystem> sys_;
};

}  // namespace testutil

#endif  // ZIVOR_TESTS_MAINSYSTEMFIXTURE_H_
