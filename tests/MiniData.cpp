#include "MiniData.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <vector>

#include "zivor/ZIVOR.h"
#include "TestUtil.h"
#include "Utility/global_linux.h"

namespace testutil {
namespace {

namespace fs = std::filesystem;

const char* const kTagMaps[] = {"ZIVOR.map", "ZIVOR_First.map", "PKU.map", "PKU_First.map"};

// Every file ZIVOR_Init may load, besides Configure.xml.
const char* const kDataFiles[] = {"CoreDict.pdat", "CoreDict.unig", "BiWord.big",
                                  "CoreDict.pos",  "ZIVOR.ctx",     "nr.role",
                                  "nr.ctx",        "nr.fsa",        "UserDict.pdat",
                                  "charset.type"};

std::string SourceDataDir() { return std::string(ZIVOR_SOURCE_DIR) + "/Data"; }

bool Fail(const std::string& what) {
  fprintf(stderr, "BuildMiniData: %s\n", what.c_str());
  return false;
}

// Writes the GBK form of a UTF-8 source file.
bool ConvertSource(const std::string& name, const std::string& work) {
  const std::string text = ReadFileBytes(MiniSourceDir() + "/" + name);
  if (text.empty()) return Fail("missing source " + name);
  WriteFile(work + "/" + name, Gbk(text));
  return true;
}

// The dictionary's word list and the word counts, both derived from the tag
// lexicon: words in order of first appearance, counts summed over tags.
void WriteWordTables(const std::string& work) {
  std::istringstream lexicon(ReadFileBytes(work + "/lexicon.txt"));
  std::vector<std::string> order;
  std::map<std::string, long> counts;
  std::string line;
  while (std::getline(lexicon, line)) {
    std::istringstream fields(line);
    std::string word, tag;
    long count = 0;
    if (!(fields >> word >> tag >> count)) continue;
    if (counts.find(word) == counts.end()) order.push_back(word);
    counts[word] += count;
  }
  std::string words, unigrams;
  for (const std::string& word : order) {
    words += word + "\n";
    unigrams += word + " " + std::to_string(counts[word]) + "\n";
  }
  WriteFile(work + "/words.txt", words);
  WriteFile(work + "/unigrams.txt", unigrams);
}

// Builds the binaries with zivor-data inside `work`, where the GBK sources
// and the tag maps already are.
bool RunSteps(const std::string& work) {
  const auto in = [&work](const char* name) { return work + "/" + name; };
  std::vector<std::vector<std::string>> steps = {
      {"pdat", in("words.txt"), in("CoreDict.pdat")},
      {"unigram", in("CoreDict.pdat"), in("unigrams.txt"), in("CoreDict.unig")},
      {"bigram", in("CoreDict.pdat"), in("pairs.txt"), in("BiWord.big")},
      {"pos", in("CoreDict.pdat"), in("lexicon.txt"), in("CoreDict.pos"), "--map",
       in("ZIVOR.map")},
      {"ctx", in("transitions.txt"), in("ZIVOR.ctx"), "--map", in("ZIVOR.map")},
      {"pos", in("CoreDict.pdat"), in("roles.txt"), in("nr.role")},
      {"ctx", in("role_transitions.txt"), in("nr.ctx"), "--map", in("ZIVOR.map"), "--size",
       "23"},
      {"fsa", in("nr_fsa.txt"), in("nr.fsa")},
      {"userdict", in("userdict.txt"), in("UserDict.pdat")},
  };
  // The shipped character types when they exist, else the set's own.
  const std::string shipped = SourceDataDir() + "/charset.type";
  if (FileSize(shipped) > 0) {
    fs::copy_file(shipped, in("charset.type"), fs::copy_options::overwrite_existing);
  } else {
    steps.push_back({"charset", in("charset.txt"), in("charset.type")});
  }
  for (const auto& step : steps) {
    if (RunDataTool(step) != 0) return Fail("zivor-data " + step[0] + " failed");
  }
  return true;
}

// Builds the set once into a directory that lives as long as the program.
const std::string* BuiltSet() {
  static std::unique_ptr<TempDir> dir;
  static bool ok = false;
  static std::once_flag once;
  std::call_once(once, [] {
    dir = std::make_unique<TempDir>();
    const std::string work = dir->path();
    for (const char* name : {"lexicon.txt", "pairs.txt", "transitions.txt", "roles.txt",
                             "role_transitions.txt", "nr_fsa.txt", "userdict.txt",
                             "charset.txt"}) {
      if (!ConvertSource(name, work)) return;
    }
    for (const char* map : kTagMaps) {
      std::error_code error;
      fs::copy_file(SourceDataDir() + "/" + map, work + "/" + map, error);
      if (error) {
        Fail(std::string("missing tag map ") + map);
        return;
      }
    }
    WriteWordTables(work);
    ok = RunSteps(work);
  });
  return ok ? &dir->path() : nullptr;
}

}  // namespace

std::string MiniSourceDir() { return std::string(ZIVOR_SOURCE_DIR) + "/tests/data/mini"; }

std::string MiniConfigure(const MiniDataOptions& o) {
  const auto on_off = [](bool on) { return on ? "on" : "off"; };
  std::string xml = "<?xml version=\"1.0\" encoding=\"GBK\"?>\n<Configure>\n";
  if (!o.tag_set.empty()) xml += "  <TagSet>" + o.tag_set + "</TagSet>\n";
  xml += "  <POSDelimiter>" + o.pos_delimiter + "</POSDelimiter>\n";
  xml += "  <WordBoundary>" + o.word_boundary + "</WordBoundary>\n";
  xml += "  <Merge>off</Merge>\n";
  xml += std::string("  <Person>") + on_off(o.person) + "</Person>\n";
  xml += std::string("  <Tagger>") + on_off(o.tagger) + "</Tagger>\n";
  xml += std::string("  <UserDict>") + on_off(o.user_dict) + "</UserDict>\n";
  xml += "  <FieldDict>off</FieldDict>\n";
  xml += "  <GranularityContorl>off</GranularityContorl>\n";
  xml += "  <POS>Full</POS>\n";
  xml += "</Configure>\n";
  return xml;
}

bool BuildMiniData(const std::string& dir, const MiniDataOptions& options) {
  const std::string* built = BuiltSet();
  if (built == nullptr) return false;
  const std::string data = dir + "/Data";
  std::error_code error;
  fs::create_directories(data, error);
  if (error) return Fail("cannot create " + data);
  std::vector<std::string> files(std::begin(kDataFiles), std::end(kDataFiles));
  files.insert(files.end(), std::begin(kTagMaps), std::end(kTagMaps));
  for (const std::string& name : files) {
    fs::copy_file(*built + "/" + name, data + "/" + name, fs::copy_options::overwrite_existing,
                  error);
    if (error) return Fail("cannot copy " + name);
  }
  WriteFile(data + "/Configure.xml", MiniConfigure(options));
  if (options.code_tables) {
    for (const auto& entry : fs::directory_iterator(fs::path(ZIVOR_SOURCE_DIR) / "Data")) {
      const fs::path name = entry.path().filename();
      const std::string ext = name.extension().string();
      // The code tables, not the shipped coarse-grained dictionary.
      if ((ext == ".pdat" || ext == ".wordlist" || ext == ".map") &&
          name.stem() != "GranDict" && !fs::exists(fs::path(data) / name)) {
        fs::create_symlink(entry.path(), fs::path(data) / name, error);
        if (error) return Fail("cannot link " + name.string());
      }
    }
  }
  return true;
}

void LibraryTest::SetUp() {
  ASSERT_TRUE(BuildMiniData(Dir(), Options()));
  char cwd[4096];
  ASSERT_NE(nullptr, getcwd(cwd, sizeof cwd));
  old_cwd_ = cwd;
  ASSERT_EQ(0, chdir(work_.path().c_str()));
}

void LibraryTest::TearDown() {
  ZIVOR_Exit();
  EXPECT_EQ(0, chdir(old_cwd_.c_str()));
}

bool LibraryTest::Init() const { return ZIVOR_Init(Dir().c_str(), 0); }

std::string LibraryTest::TakeLog() const {
  const std::string path = LogFileName(nullptr);
  std::istringstream log(ReadFileBytes(path));
  fs::remove(path);
  std::string messages, line;
  while (std::getline(log, line)) {
    // "[YYYY-mm-dd HH:MM:SS] " is 22 bytes.
    if (line.size() >= 22 && line[0] == '[' && line[20] == ']') line.erase(0, 22);
    messages += line + "\n";
  }
  return messages;
}

TempDir* ShippedLibraryTest::data_ = nullptr;

void ShippedLibraryTest::SetUpTestSuite() {
  data_ = new TempDir;
  fs::copy(SourceDataDir(), data_->File("Data"), fs::copy_options::recursive);
}

void ShippedLibraryTest::TearDownTestSuite() {
  delete data_;
  data_ = nullptr;
}

void ShippedLibraryTest::SetUp() {
  old_cwd_ = fs::current_path().string();
  ASSERT_EQ(0, chdir(work_.path().c_str()));
}

void ShippedLibraryTest::TearDown() {
  ZIVOR_Exit();
  EXPECT_EQ(0, chdir(old_cwd_.c_str()));
}

bool ShippedLibraryTest::Init(int encode) {
  ZIVOR_Exit();
  return ZIVOR_Init(data_->path().c_str(), encode);
}

std::ostream& operator<<(std::ostream& out, const ApiWord& w) { return out << w.text << "/" << w.tag; }

std::vector<ApiWord> ApiWords(const std::string& text, bool userDict, size_t first) {
  int count = 0;
  const result_t* records = ZIVOR_ParagraphProcessA(text.c_str(), &count, userDict);
  std::vector<ApiWord> words;
  size_t covered = first;
  for (int i = 0; i < count; ++i) {
    const result_t& r = records[i];
    EXPECT_EQ(covered, static_cast<size_t>(r.start)) << "record " << i;
    EXPECT_GT(r.length, 0) << "record " << i;
    if (r.start < 0 || r.length < 0 || static_cast<size_t>(r.start + r.length) > text.size()) {
      ADD_FAILURE() << "record " << i << " outside the text";
      break;
    }
    covered = static_cast<size_t>(r.start + r.length);
    words.push_back({text.substr(r.start, r.length), r.sPOS});
  }
  EXPECT_EQ(text.size(), covered);
  return words;
}

}  // namespace testutil
