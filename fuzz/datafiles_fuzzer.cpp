// datafiles_fuzzer: initialisation on damaged data files.
//
// A private copy of the shipped Data is made once. Each input damages one of
// its files, then initialises the library on the copy in an encoding that
// reads the file, and puts the file back afterwards. Input:
//   byte 0   which file (the files sorted by name, modulo their number);
//   byte 1   the encoding: for a translation table, which of the encodings
//            that load it; for the other files GBK (0) or GBK through the
//            translator (4), which load no table;
//   then up to kMaxEdits edits, each a kind byte and its operands:
//     0 truncate   u32 L: keep L modulo (size + 1) bytes;
//     1 overwrite  u32 offset, u8 n, n bytes: written at offset modulo
//                  (size + 1), growing the file when they run past its end;
//     2 xor        u32 offset, u8 mask: one byte changed;
//     3 header int u32 offset, u32 value: a little-endian 32-bit value at a
//                  multiple of 4 among the first 256 bytes, where the counts
//                  and sizes of the binary files are;
//     4 int        u32 offset, u32 value: the same anywhere in the file.
// ZIVOR_Init may refuse the data, and then every call gives its failure value;
// when it accepts it, a couple of analyses, keywords and ZIVOR_Exit run. No
// input may crash, hang, leak or read out of bounds.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "Utility/CodeTran.h"

namespace {

constexpr int kMaxEdits = 16;
constexpr uint32_t kHeaderBytes = 256;

// A text in each encoding for the analyses of accepted data.
const char* SampleText(int encoding) {
  switch (encoding) {
    case fuzz::kUTF8:
      return "江泽民主席在人民大会堂会见了美国客人，1998年1月1日。😀";
    case fuzz::kBIG5:
      return "\xA7\xDA\xAD\xCC\xAA\xBA\xC0Y\xBEv\xAB\xDC\xAA\xF8\xA1" "A\xB3o\xAD\xD3\xB0\xDD\xC3"
             "D\xA4w\xB8g\xB8\xD1\xA8M\xA4" "F\xA1" "C";
    case fuzz::kGBKC:
      return "\xCE\xD2\x82\x83\xB5\xC4\xEE^\xF3\x8C\xBA\xDC\xE9L\xA3\xAC\xDF@\x82\x80\x86\x96\xEE}"
             "\xD2\xD1\xBD\x9B\xBD\xE2\x9BQ\xC1\xCB\xA1\xA3";
    default:
      return "\xBD\xAD\xD4\xF3\xC3\xF1\xD6\xF7\xCF\xAF\xD4\xDA\xC8\xCB\xC3\xF1\xB4\xF3\xBB\xE1\xCC"
             "\xC3\xBB\xE1\xBC\xFB\xC1\xCB\xC3\xC0\xB9\xFA\xBF\xCD\xC8\xCB\xA3\xAC" "1998\xC4\xEA"
             "1\xD4\xC2" "1\xC8\xD5\xA1\xA3";
  }
}

// The encodings (1 to 3) whose translator loads the file; none for the
// files every initialisation reads.
std::vector<int> EncodingsLoading(const std::string& name) {
  std::vector<int> encodings;
  for (const int encoding : {fuzz::kUTF8, fuzz::kBIG5, fuzz::kGBKC}) {
    const std::vector<std::string> tables = CCodeTran::TableFileNames(encoding);
    if (std::find(tables.begin(), tables.end(), name) != tables.end()) {
      encodings.push_back(encoding);
    }
  }
  return encodings;
}

// The shipped data files, kept in memory, and the copy they are damaged in.
class DataBench {
 public:
  static DataBench& Get() {
    static DataBench bench;
    return bench;
  }
  size_t size() const { return files_.size(); }
  const std::string& Name(size_t i) const { return files_[i].name; }
  const std::string& Bytes(size_t i) const { return files_[i].bytes; }
  const std::string& Dir() const { return dir_.path(); }
  void Write(size_t i, const std::string& bytes) const {
    fuzz::WriteFile(dir_.File("Data/" + files_[i].name), bytes);
  }

 private:
  DataBench() {
    fuzz::CopyShippedData(dir_.path());
    for (const auto& entry : std::filesystem::directory_iterator(dir_.File("Data"))) {
      const std::string name = entry.path().filename().string();
      // Neither the roles' description nor the new-word log is read.
      if (entry.path().extension() == ".md" || name == "NewWord.lst") continue;
      files_.push_back({name, fuzz::ReadFileBytes(entry.path().string())});
    }
    std::sort(files_.begin(), files_.end(),
              [](const File& a, const File& b) { return a.name < b.name; });
  }
  struct File {
    std::string name;
    std::string bytes;
  };
  fuzz::ScratchDir dir_;
  std::vector<File> files_;
};

// Puts the pristine file back when the input is done, whatever happened.
class Restore {
 public:
  explicit Restore(size_t file) : file_(file) {}
  ~Restore() {
    const DataBench& bench = DataBench::Get();
    bench.Write(file_, bench.Bytes(file_));
  }
  Restore(const Restore&) = delete;
  Restore& operator=(const Restore&) = delete;

 private:
  size_t file_;
};

void PutInt(std::string* bytes, size_t offset, uint32_t value) {
  for (int i = 0; i < 4 && offset + i < bytes->size(); ++i) {
    (*bytes)[offset + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
  }
}

size_t AlignedOffset(uint32_t offset, size_t range) {
  return range < 4 ? 0 : offset % (range - 3) / 4 * 4;
}

void ApplyEdit(fuzz::Input& input, std::string* bytes) {
  const uint8_t kind = input.Byte() % 5;
  const uint32_t offset = input.Word();
  switch (kind) {
    case 0:
      bytes->resize(offset % (bytes->size() + 1));
      break;
    case 1: {
      const size_t at = offset % (bytes->size() + 1);
      const std::string data = input.Bytes(input.Byte());
      if (at + data.size() > bytes->size()) bytes->resize(at + data.size());
      bytes->replace(at, data.size(), data);
      break;
    }
    case 2:
      if (!bytes->empty()) (*bytes)[offset % bytes->size()] ^= static_cast<char>(input.Byte());
      break;
    case 3:
      PutInt(bytes, AlignedOffset(offset, std::min<size_t>(bytes->size(), kHeaderBytes)),
             input.Word());
      break;
    default:
      PutInt(bytes, AlignedOffset(offset, bytes->size()), input.Word());
      break;
  }
}

// The analyses of accepted data: records in order inside the text (tiling
// it), the result text and keywords.
void Analyse(int encoding) {
  const std::string text = SampleText(encoding);
  int count = -1;
  const result_t* records = ZIVOR_ParagraphProcessA(text.c_str(), &count, true);
  fuzz::CheckRecords(text, encoding, records, count);
  fuzz::Require(ZIVOR_ParagraphProcess(text.c_str(), 1) != nullptr, "no result text");
  fuzz::Require(ZIVOR_GetKeyWords(text.c_str(), -1, true) != nullptr, "no keyword list");
}

// A refused initialisation leaves nothing to call.
void ExpectInactive() {
  int count = -1;
  fuzz::Require(ZIVOR_ParagraphProcessA("a", &count, true) == nullptr && count == 0,
                "an analysis after a refused initialisation");
  fuzz::Require(!ZIVOR_Exit(), "ZIVOR_Exit after a refused initialisation");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const DataBench& bench = DataBench::Get();
  fuzz::Input input(data, size);
  const size_t file = input.Byte() % bench.size();
  const uint8_t choice = input.Byte();
  const std::vector<int> loading = EncodingsLoading(bench.Name(file));
  const int encoding = loading.empty() ? (choice % 2 == 0 ? fuzz::kGBK : fuzz::kPlainGBK)
                                       : loading[choice % loading.size()];

  std::string bytes = bench.Bytes(file);
  for (int i = 0; i < kMaxEdits && !input.empty(); ++i) ApplyEdit(input, &bytes);
  const Restore restore(file);
  bench.Write(file, bytes);
  if (!ZIVOR_Init(bench.Dir().c_str(), encoding)) {
    ExpectInactive();
    return 0;
  }
  Analyse(encoding);
  fuzz::Require(ZIVOR_Exit(), "ZIVOR_Exit after an accepted initialisation");
  return 0;
}
