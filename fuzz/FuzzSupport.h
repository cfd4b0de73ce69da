// FuzzSupport.h: what the libFuzzer harnesses share: failing a run with a
// reason, scratch directories, a private copy of the shipped data, the
// library initialised once per encoding, and the checks every analysis
// result must pass whatever the text.
#ifndef ZIVOR_FUZZ_FUZZSUPPORT_H_
#define ZIVOR_FUZZ_FUZZSUPPORT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "API/ZIVOR.h"

namespace fuzz {

// The caller's encodings, as ZIVOR_Init takes them.
constexpr int kGBK = 0, kUTF8 = 1, kBIG5 = 2, kGBKC = 3, kPlainGBK = 4;
constexpr int kEncodings = 5;

// Prints the broken property on standard error and aborts, so that libFuzzer
// keeps the input as a crash.
[[noreturn]] void Fail(const std::string& what);
inline void Require(bool ok, const char* what) {
  if (!ok) Fail(what);
}

// A fresh directory removed with its contents when the object dies.
class ScratchDir {
 public:
  ScratchDir();
  ~ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFileBytes(const std::string& path);

// The shipped Data directory of the source tree.
std::string ShippedDataDir();

// Copies every regular file of the shipped Data directory into dir/Data.
void CopyShippedData(const std::string& dir);

// The library initialised on a private copy of the shipped data (the
// analyses write the new-word log and the user dictionary there). One per
// process: ZIVOR_Init runs again only when the encoding changes.
class Library {
 public:
  static Library& Get();
  // Makes `encoding` the encoding of the initialised library; aborts when the
  // shipped data does not load.
  void Use(int encoding);
  int encoding() const { return encoding_; }
  // The directory that holds Data, and a file beside Data for the harness.
  const std::string& Dir() const { return dir_.path(); }
  std::string ScratchFile(const std::string& name) const { return dir_.File(name); }
  // Empties the new-word log, which every ZIVOR_GetNewWords appends to, once
  // it has grown, so that long runs do not fill the disk.
  void TrimNewWordLog() const;

 private:
  Library();
  ~Library();
  ScratchDir dir_;
  int encoding_ = -1;
};

// The taggers of an analysis instance switch their default tag for good the
// first time they meet a word without lexicon entries that is a symbol
// (Tagger/HMMTagger.h), so what an instance gives depends on what it analysed
// before, and the pooled instance and the main one can disagree on the same
// text. This has the instances this thread uses (its pooled one and the main
// one) meet such a symbol at once, so that the analyses of each input can be
// compared with each other.
void SettleTaggers(int encoding);

// --- Properties of every analysis ---------------------------------------------

// Where the analysis of `text` starts: after a UTF-8 byte-order mark.
size_t Origin(const std::string& text, int encoding);

// Whether the records of `text` must cover it from its origin to its end
// without gap: no line break, and no white space at the start (which a long
// text drops at the start of each line).
bool MustTile(const std::string& text, int encoding);

// The records of `text` (the bytes before its first NUL): each lies inside
// the text with a positive length, after the one before, with a NUL-ended tag
// name; when MustTile, they follow each other without gap from the origin to
// the end.
void CheckRecords(const std::string& text, int encoding, const result_t* records, int count);

// The analysis of `text` in every form: the result text tagged and untagged
// and the records with and without the user dictionary, checked with
// CheckRecords, and against each other when the records must tile.
void AnalyseAndCheck(const std::string& text, int encoding);

// --- Character layouts, checked independently of the library's readers -------

bool IsWellFormedUtf8(const std::string& s);
// GBK: lead 0x81-0xFE, trail 0x40-0x7E or 0x80-0xFE; BIG5: trail 0x40-0x7E or
// 0xA1-0xFE.
bool IsWellFormedDoubleByte(const std::string& s, bool big5);

// --- Reading the input --------------------------------------------------------

// Splits the fuzzer's bytes into the leading control bytes and the rest.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  // The next byte, 0 when none is left.
  uint8_t Byte();
  // The next four bytes, little-endian (missing bytes are 0).
  uint32_t Word();
  // The next `n` bytes (fewer when the input ends).
  std::string Bytes(size_t n);
  // Everything not read yet.
  std::string Rest();
  bool empty() const { return pos_ >= size_; }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

// The text as the C interface sees it: the bytes before the first NUL.
std::string CText(const std::string& text);

// The lines of `text`, split at '\n', at most `limit` of them.
std::vector<std::string> Lines(const std::string& text, size_t limit);

}  // namespace fuzz

#endif  // ZIVOR_FUZZ_FUZZSUPPORT_H_
