// DamagedData_test.cpp: every data file the library loads is refused when it
// is damaged in a way its contents can show (cut short, followed by a stray
// byte, empty, or with a count that no longer fits), and initialisation
// names the refused file.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "MiniData.h"
#include "TestUtil.h"
#include "Utility/Bigram.h"
#include "Utility/BinaryIO.h"
#include "Utility/Charset.h"
#include "Utility/ContextStat.h"
#include "Utility/FSA.h"
#include "Utility/IDMaps.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/Unigram.h"
#include "Utility/WordList.h"
#include "Utility/trie.h"

namespace {

namespace fs = std::filesystem;

// Loads a file into one table object, kept from call to call.
using Loader = std::function<bool(const char*)>;

template <class T, class... Args>
Loader LoaderOf(Args... args) {
  const auto table = std::make_shared<T>(args...);
  return [table](const char* path) { return table->Load(path); };
}

// Statistics files are loaded without their names, as initialisation does.
Loader ContextLoader() {
  const auto table = std::make_shared<CContextStat>();
  return [table](const char* path) { return table->Load(path, false); };
}

// A binary file and the offset of a count in it; `shipped` files are read
// from Data/, the others from the mini data set.
struct BinaryKind {
  const char* name;
  size_t count;
  Loader load;
  bool shipped = false;
};

// charset.type has no count whose change shows: its damage is a type on
// codes 0x0100 to 0x0103, which no source line can name.
const std::vector<BinaryKind>& Binaries() {
  static const std::vector<BinaryKind> kinds = {
      {"charset.type", 4 + 0x100, LoaderOf<CCharset>()},
      {"CoreDict.pdat", CPDAT::kCharCodes * 4, LoaderOf<CPDAT>()},
      {"CoreDict.unig", 4, LoaderOf<CUnigram>()},
      {"BiWord.big", 0, LoaderOf<CBigram>()},
      {"CoreDict.pos", 0, LoaderOf<CPOS>()},
      {"ZIVOR.ctx", 0, ContextLoader()},
      {"nr.role", 0, LoaderOf<CPOS>()},
      {"nr.ctx", 0, ContextLoader()},
      {"nr.fsa", 4, LoaderOf<CFSA>()},
      {"UserDict.pdat", 0, LoaderOf<CTrie>()},
      {"GBK.pdat", CPDAT::kCharCodes * 4, LoaderOf<CPDAT>(true), true},
      {"GBK.wordlist", 0, LoaderOf<CWordList>(), true},
      {"GBK2BIG.map", 0, LoaderOf<CIDMaps>(), true},
  };
  return kinds;
}

// Cut by one byte, one byte longer, empty, and the count one higher.
std::vector<std::string> Damaged(const std::string& good, size_t count) {
  const int value = LoadLE32(reinterpret_cast<const unsigned char*>(good.data() + count));
  return {good.substr(0, good.size() - 1), good + '\0', std::string(),
          testutil::Patched(good, count, value + 1)};
}

class DamagedDataTest : public testutil::LibraryTest {
 protected:
  testutil::MiniDataOptions Options() const override {
    testutil::MiniDataOptions options;
    options.user_dict = true;
    options.code_tables = true;
    return options;
  }
  std::string PathOf(const BinaryKind& kind) const {
    return kind.shipped ? std::string(ZIVOR_SOURCE_DIR) + "/Data/" + kind.name
                        : DataFile(kind.name);
  }
  // Replaces a data file (never through the link to a shipped table).
  void Put(const std::string& name, const std::string& bytes) const {
    fs::remove(DataFile(name));
    testutil::WriteFile(DataFile(name), bytes);
  }
  // Initialisation fails, and the log names the file.
  void ExpectInitRefuses(const std::string& name) const {
    EXPECT_FALSE(Init()) << name;
    EXPECT_EQ("Cannot open file \n" + DataFile(name) + "\n", TakeLog()) << name;
  }
};

TEST_F(DamagedDataTest, EachLoaderTakesItsFileAndRefusesItDamaged) {
  for (const BinaryKind& kind : Binaries()) {
    SCOPED_TRACE(kind.name);
    const std::string good = testutil::ReadFileBytes(PathOf(kind));
    ASSERT_FALSE(good.empty());
    ASSERT_TRUE(kind.load(PathOf(kind).c_str()));
    testutil::ExpectEachRefused(work_.File("bad"), Damaged(good, kind.count), kind.load);
  }
}

TEST_F(DamagedDataTest, InitialisationNamesEachDamagedRequiredFile) {
  for (const BinaryKind& kind : Binaries()) {
    if (kind.shipped || kind.name == std::string("UserDict.pdat")) continue;
    const std::string good = testutil::ReadFileBytes(DataFile(kind.name));
    for (const std::string& bad : Damaged(good, kind.count)) {
      Put(kind.name, bad);
      ExpectInitRefuses(kind.name);
    }
    Put(kind.name, good);
  }
  // Tag maps are text: nothing in them, or a NUL byte.
  for (const char* name : {"ZIVOR.map", "PKU_First.map", "ZIVOR_First.map", "PKU.map"}) {
    const std::string good = testutil::ReadFileBytes(DataFile(name));
    for (const std::string& bad : {std::string(), good + '\0' + "x\n"}) {
      Put(name, bad);
      ExpectInitRefuses(name);
    }
    Put(name, good);
  }
  EXPECT_TRUE(Init());
  EXPECT_EQ("", TakeLog());
}

TEST_F(DamagedDataTest, OptionalTablesThatAreDamagedAreLoggedAndSkipped) {
  for (const BinaryKind& kind : Binaries()) {
    if (!kind.shipped && kind.name != std::string("UserDict.pdat")) continue;
    const std::string good = testutil::ReadFileBytes(PathOf(kind));
    Put(kind.name, good.substr(0, good.size() - 1));
    ASSERT_TRUE(ZIVOR_Init(Dir().c_str(), 2)) << kind.name;  // BIG5: GBK.* and GBK2BIG.map
    const std::string log = TakeLog();
    const std::string expected = kind.shipped
                                     ? DataFile(kind.name) + " cannot load!\n"
                                     : "Cannot open user dictionary\n" + DataFile(kind.name) + "\n";
    EXPECT_NE(log.find(expected), std::string::npos) << kind.name << "\n" << log;
    ASSERT_TRUE(ZIVOR_Exit());
    Put(kind.name, good);
  }
}

}  // namespace
