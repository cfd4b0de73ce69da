// zivor-data codetables: the code-translation tables, built from the code
// pages and conversion tables of a source directory (CodeTableSources.h)
// as CodeTablePlan.h lays out.
//
// Every dictionary, word list and map is written by the library's own
// importers from word files in a scratch directory, then read back and
// checked: each string must be found under its handle, give its string back
// and map to its target. The plan is kept in ordered containers, so the same
// sources give the same bytes.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "CodeTablePlan.h"
#include "CodeTableSources.h"
#include "Command.h"
#include "ScratchDir.h"
#include "Utility/IDMaps.h"
#include "Utility/PDAT.h"
#include "Utility/WordList.h"

namespace {

int RunCodeTables(const std::vector<std::string>& raw);

const DataCommand kCodeTables{
    "codetables", "codetables --sources DIR --out DIR",
    "the code-translation tables (UTF-8, BIG5 and GBKC to GBK and back) from the code pages "
    "and conversion tables in the sources directory",
    RunCodeTables};

// Prints the reason of a failure; returns false.
bool Failure(const std::string& message) {
  fprintf(stderr, "zivor-data codetables: %s\n", message.c_str());
  return false;
}

// The same for the command: returns the exit status 1.
int Fail(const std::string& message) {
  Failure(message);
  return 1;
}

// Sends standard output to /dev/null while it lives: CWordList::Import
// prints a line per word.
class QuietStdout {
 public:
  QuietStdout() : saved_((fflush(stdout), dup(STDOUT_FILENO))) {
    const int null = open("/dev/null", O_WRONLY);
    if (null >= 0) {
      dup2(null, STDOUT_FILENO);
      close(null);
    }
  }
  ~QuietStdout() {
    fflush(stdout);
    if (saved_ >= 0) {
      dup2(saved_, STDOUT_FILENO);
      close(saved_);
    }
  }
  QuietStdout(const QuietStdout&) = delete;
  QuietStdout& operator=(const QuietStdout&) = delete;

 private:
  const int saved_;
};

bool WriteLines(const std::string& path, const std::vector<std::string>& lines) {
  FILE* fp = fopen(path.c_str(), "wb");
  if (fp == nullptr) return false;
  for (const std::string& line : lines) fprintf(fp, "%s\n", line.c_str());
  return fclose(fp) == 0;
}

// One dictionary entry: a string and the bytes it is written as.
struct Entry {
  Text text;
  std::string bytes;
};

// The entries of a lexicon in handle order: single characters first, then
// longer strings, each group by bytes. The decode-only codes of a code page
// come as further spellings of their characters.
std::vector<Entry> EntriesOf(const Lexicon& lexicon) {
  std::vector<Entry> entries;
  for (const Text& text : lexicon.strings) entries.push_back({text, lexicon.Bytes(text)});
  if (lexicon.page != nullptr) {
    for (const auto& [code, c] : lexicon.page->Decoded()) {
      const Text text(1, c);
      const std::string bytes{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
      if (lexicon.strings.count(text) != 0 && bytes != lexicon.Bytes(text)) {
        entries.push_back({text, bytes});
      }
    }
  }
  std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    const bool aLong = a.text.size() > 1, bLong = b.text.size() > 1;
    return aLong != bLong ? bLong : a.bytes < b.bytes;
  });
  return entries;
}

std::vector<std::string> BytesOf(const std::vector<Entry>& entries) {
  std::vector<std::string> bytes;
  for (const Entry& entry : entries) bytes.push_back(entry.bytes);
  return bytes;
}

// Writes the tables of a plan into one directory.
class TableWriter {
 public:
  TableWriter(const std::string& out, const ScratchDir& scratch) : out_(out), scratch_(scratch) {}

  // NAME.pdat and NAME.wordlist of the lexicon.
  bool WriteLexicon(const Lexicon& lexicon);
  // The map file; both lexicons must have been written.
  bool WriteMapping(const Mapping& mapping);
  // One line on the encoding's tables.
  void PrintSummary(const EncodingTables& encoding) const;

 private:
  struct Written {
    std::vector<Entry> entries;  // by handle - 1
    std::unique_ptr<CPDAT> dict;
    std::unique_ptr<CWordList> words;
  };
  struct Counts {
    int chars = 0;
    int phrases = 0;
  };

  std::string Out(const std::string& name) const { return out_ + "/" + name; }
  bool BuildDictionary(const Lexicon& lexicon, const std::string& list, Written* written) const;
  bool BuildWordList(const Lexicon& lexicon, const std::string& list, Written* written) const;
  bool CheckMap(const CIDMaps& map, const Written& from, const Written& to,
                const std::vector<std::string>& sources,
                const std::vector<std::string>& targets) const;
  Counts CountTargets(const Mapping& mapping) const;
  long long FileBytes(const std::vector<std::string>& names) const;

  const std::string out_;
  const ScratchDir& scratch_;
  std::map<const Lexicon*, Written> written_;
};

bool TableWriter::WriteLexicon(const Lexicon& lexicon) {
  Written written;
  written.entries = EntriesOf(lexicon);
  const std::string list = scratch_.File(lexicon.name + ".txt");
  if (!WriteLines(list, BytesOf(written.entries))) return Failure("cannot write " + list);
  if (!BuildDictionary(lexicon, list, &written) || !BuildWordList(lexicon, list, &written)) {
    return false;
  }
  written_[&lexicon] = std::move(written);
  return true;
}

bool TableWriter::BuildDictionary(const Lexicon& lexicon, const std::string& list,
                                  Written* written) const {
  const std::vector<Entry>& entries = written->entries;
  written->dict = std::make_unique<CPDAT>(true);
  written->dict->SetImportProgress(false);
  if (written->dict->Import(list.c_str()) != static_cast<int>(entries.size())) {
    return Failure("cannot import " + list);
  }
  for (size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].bytes.empty() ||
        written->dict->Find(entries[i].bytes.c_str()) != static_cast<int>(i) + 1) {
      return Failure(lexicon.name + ".pdat does not find its entry " + std::to_string(i + 1));
    }
  }
  const std::string path = Out(lexicon.name + ".pdat");
  return written->dict->Save(path.c_str()) || Failure("cannot write " + path);
}

bool TableWriter::BuildWordList(const Lexicon& lexicon, const std::string& list,
                                Written* written) const {
  written->words = std::make_unique<CWordList>();
  bool imported = false;
  {
    const QuietStdout quiet;
    imported = written->words->Import(list.c_str(), written->dict.get());
  }
  if (!imported) return Failure("cannot import " + list);
  for (size_t i = 0; i < written->entries.size(); ++i) {
    const char* word = written->words->GetWord(static_cast<int>(i) + 1);
    if (word == nullptr || word != written->entries[i].bytes) {
      return Failure(lexicon.name + ".wordlist misses its entry " + std::to_string(i + 1));
    }
  }
  const std::string path = Out(lexicon.name + ".wordlist");
  return written->words->Save(path.c_str()) || Failure("cannot write " + path);
}

bool TableWriter::WriteMapping(const Mapping& mapping) {
  const Written& from = written_.at(mapping.from);
  const Written& to = written_.at(mapping.to);
  std::vector<std::string> sources, targets;
  for (const Entry& entry : from.entries) {
    const auto target = mapping.targets.find(entry.text);
    if (target == mapping.targets.end()) continue;
    sources.push_back(entry.bytes);
    targets.push_back(mapping.to->Bytes(target->second));
  }
  const std::string sourceList = scratch_.File(mapping.file + ".sources");
  const std::string targetList = scratch_.File(mapping.file + ".targets");
  if (!WriteLines(sourceList, sources) || !WriteLines(targetList, targets)) {
    return Failure("cannot write the word pairs of " + mapping.file);
  }
  CIDMaps map;
  if (!map.Import(sourceList.c_str(), targetList.c_str(), from.dict.get(), to.dict.get()) ||
      !CheckMap(map, from, to, sources, targets)) {
    return Failure("cannot build " + mapping.file);
  }
  const std::string path = Out(mapping.file);
  return map.Save(path.c_str()) || Failure("cannot write " + path);
}

bool TableWriter::CheckMap(const CIDMaps& map, const Written& from, const Written& to,
                           const std::vector<std::string>& sources,
                           const std::vector<std::string>& targets) const {
  if (map.GetSize() != static_cast<int>(sources.size())) return false;
  for (size_t i = 0; i < sources.size(); ++i) {
    int count = 0;
    const CIDMaps::idmaps_info* found = map.GetMaps(from.dict->Find(sources[i].c_str()), &count);
    const char* word = found != nullptr ? to.words->GetWord(found->handle2) : nullptr;
    if (count != 1 || word == nullptr || word != targets[i]) return false;
  }
  return true;
}

TableWriter::Counts TableWriter::CountTargets(const Mapping& mapping) const {
  Counts counts;
  for (const Entry& entry : written_.at(mapping.from).entries) {
    if (mapping.targets.count(entry.text) == 0) continue;
    ++(entry.text.size() > 1 ? counts.phrases : counts.chars);
  }
  return counts;
}

long long TableWriter::FileBytes(const std::vector<std::string>& names) const {
  long long total = 0;
  for (const std::string& name : names) {
    std::error_code error;
    const auto size = std::filesystem::file_size(Out(name), error);
    if (!error) total += static_cast<long long>(size);
  }
  return total;
}

void TableWriter::PrintSummary(const EncodingTables& encoding) const {
  const Counts in = CountTargets(*encoding.toGbk);
  const Counts out = CountTargets(*encoding.fromGbk);
  const std::string& ext = encoding.toGbk->from->name;
  const std::string& gbk = encoding.toGbk->to->name;
  const long long bytes =
      FileBytes({ext + ".pdat", ext + ".wordlist", gbk + ".pdat", gbk + ".wordlist",
                 encoding.toGbk->file, encoding.fromGbk->file});
  const int extChars = static_cast<int>(encoding.chars->Decoded().size());
  const int gbkChars = static_cast<int>(encoding.toGbk->to->page->Decoded().size());
  printf(
      "%s: %d characters and %d phrases to GBK (%d of %d characters unmapped), "
      "%d characters and %d phrases from GBK (%d of %d unmapped); %lld bytes\n",
      encoding.name.c_str(), in.chars, in.phrases, extChars - in.chars, extChars, out.chars,
      out.phrases, gbkChars - out.chars, gbkChars, bytes);
}

int RunCodeTables(const std::vector<std::string>& raw) {
  const ArgList args(raw, {"--sources", "--out"});
  const std::string sourceDir = args.Option("--sources");
  const std::string out = args.Option("--out");
  if (!args.ok() || !args.positional().empty() || sourceDir.empty() || out.empty()) {
    return UsageError(kCodeTables);
  }
  CodeTableSources sources;
  std::string error;
  if (!sources.Load(sourceDir, &error)) return Fail(error);
  const CodeTablePlan plan(sources);
  const ScratchDir scratch("zivor-codetables");
  if (!scratch.ok()) return Fail("cannot create a temporary directory");
  TableWriter writer(out, scratch);
  for (const auto& lexicon : plan.Lexicons()) {
    if (!writer.WriteLexicon(*lexicon)) return 1;
  }
  for (const auto& mapping : plan.Mappings()) {
    if (!writer.WriteMapping(*mapping)) return 1;
  }
  for (const EncodingTables& encoding : plan.Encodings()) writer.PrintSummary(encoding);
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kCodeTables);
