// TestUtil.h: helpers shared by the unit tests: scratch directories, file
// contents, the data tool, and where the training corpus lives.
#ifndef ZIVOR_TESTS_TESTUTIL_H_
#define ZIVOR_TESTS_TESTUTIL_H_

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class CPDAT;

namespace testutil {

// A fresh directory removed with its contents when the object dies.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  // path()/name
  std::string File(const std::string& name) const;
  // Writes the bytes to path()/name and returns that path.
  std::string Write(const std::string& name, const std::string& bytes) const;

 private:
  std::string path_;
};

void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFileBytes(const std::string& path);
long FileSize(const std::string& path);  // -1 when absent

// A finished command: its exit status (-1 when it did not exit) and what it
// printed on standard output and standard error.
struct ToolRun {
  int status = -1;
  std::string out, err;
};

// Runs the program with the arguments in directory `dir` ("" for the
// current one), with `input` on standard input.
ToolRun RunTool(const std::string& program, const std::vector<std::string>& args,
                const std::string& dir = "", const std::string& input = "");

// Runs zivor-data with the arguments; returns its exit status and, when
// `output` is given, what it printed on standard output.
int RunDataTool(const std::vector<std::string>& args, std::string* output = nullptr);

// The annotated training corpus, or "" when it is not beside the checkout.
std::string CorpusPath();

// GBK bytes of a UTF-8 string (tests keep their literals in UTF-8).
std::string Gbk(const std::string& utf8);
// UTF-8 of GBK bytes, for readable failure messages.
std::string Utf8(const std::string& gbk);
// BIG5 bytes of a UTF-8 string.
std::string Big5(const std::string& utf8);

// The code of the first character of GBK bytes: a two-byte character's
// bytes high first, or a single byte.
int Code(const std::string& gbk);

// ASCII letters lowered, as the dictionaries fold them; trail bytes of
// two-byte characters stay as they are.
std::string FoldAscii(std::string gbk);

// The values as little-endian 32-bit integers, for hand-made binary files.
std::string Ints(const std::vector<int>& values);

// A tag lexicon file (the layout CPOS::Load reads): handle h has the
// (tag, count) records lexicon[h], none when it is empty.
std::string LexiconBytes(const std::vector<std::vector<std::pair<int, int>>>& lexicon);

// The lines, each followed by '\n'.
std::string Lines(const std::vector<std::string>& lines);

// Sets the handles of the pseudo-words and marked punctuation (gSent_StartID,
// gUnknown_nr_ID, gOneID, ...) from the dictionary; all -1 without one.
void ResolvePseudoWords(const CPDAT* dict);

// The bytes with `value` stored little-endian at `offset`.
std::string Patched(std::string bytes, size_t offset, int value);

// Every proper prefix of the bytes, the empty one first: the cut files.
std::vector<std::string> Prefixes(const std::string& bytes);

// The bytes object.Save(path, args...) writes.
template <class T, class... Args>
std::string SavedBytes(const T& object, const Args&... args) {
  TempDir dir;
  EXPECT_TRUE(object.Save(dir.File("saved").c_str(), args...));
  return ReadFileBytes(dir.File("saved"));
}

// The working directory changed to `dir` for the object's lifetime.
class ScopedCwd {
 public:
  explicit ScopedCwd(const std::string& dir);
  ~ScopedCwd();
  ScopedCwd(const ScopedCwd&) = delete;
  ScopedCwd& operator=(const ScopedCwd&) = delete;

 private:
  std::string old_;
};

// Runs `action` in a fresh working directory; returns the day's log it wrote
// there.
std::string LogOf(const std::function<void()>& action);

// Writes each file in turn to `path` (a fresh file each time) and expects
// `load(path)` to refuse it.
template <class Load>
void ExpectEachRefused(const std::string& path, const std::vector<std::string>& files, Load load) {
  for (size_t i = 0; i < files.size(); ++i) {
    std::remove(path.c_str());
    WriteFile(path, files[i]);
    EXPECT_FALSE(load(path.c_str())) << "damaged file " << i << ", " << files[i].size() << " bytes";
  }
}

}  // namespace testutil

#endif  // ZIVOR_TESTS_TESTUTIL_H_
