// zivor-data wordlist and idmap: the handle-to-string lists and the
// handle-to-handle maps of the code translation tables, and their dumps
// (`export wordlist`, `export idmap`).
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "Command.h"
#include "Utility/IDMaps.h"
#include "Utility/PDAT.h"
#include "Utility/WordList.h"

namespace {

// Loads a dictionary; byte-oriented tables are read with --*byte-mode.
std::unique_ptr<CPDAT> LoadDict(const std::string& path, bool byteMode, const char* command) {
  auto dict = std::make_unique<CPDAT>(byteMode);
  if (!dict->Load(path.c_str())) {
    fprintf(stderr, "zivor-data %s: cannot load %s\n", command, path.c_str());
    return nullptr;
  }
  return dict;
}

int RunWordList(const std::vector<std::string>& raw);
int RunIdMap(const std::vector<std::string>& raw);

const DataCommand kWordList{
    "wordlist", "wordlist DICT.pdat WORDS.txt OUT.wordlist [--byte-mode]",
    "strings of a dictionary's handles, from a word file (first token per line)", RunWordList};

const DataCommand kIdMap{"idmap",
                         "idmap LEFT.pdat RIGHT.pdat (PAIRS.txt | SOURCES.txt TARGETS.txt) OUT.map "
                         "[--left-byte-mode] [--right-byte-mode]",
                         "map from handles of LEFT to handles of RIGHT, from word pairs", RunIdMap};

int RunWordList(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() != 3) return UsageError(kWordList);
  const std::vector<std::string>& files = args.positional();
  const std::unique_ptr<CPDAT> dict = LoadDict(files[0], args.HasFlag("--byte-mode"), "wordlist");
  if (!dict) return 1;
  CWordList list;
  if (!list.Import(files[1].c_str(), dict.get())) {
    fprintf(stderr, "zivor-data wordlist: cannot import %s\n", files[1].c_str());
    return 1;
  }
  if (!list.Save(files[2].c_str())) {
    fprintf(stderr, "zivor-data wordlist: cannot write %s\n", files[2].c_str());
    return 1;
  }
  printf("%d words, %d handles\n", list.GetItemCount(), list.GetBound());
  return 0;
}

int RunIdMap(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  const std::vector<std::string>& files = args.positional();
  if (!args.ok() || (files.size() != 4 && files.size() != 5)) return UsageError(kIdMap);
  const std::unique_ptr<CPDAT> left = LoadDict(files[0], args.HasFlag("--left-byte-mode"), "idmap");
  const std::unique_ptr<CPDAT> right =
      LoadDict(files[1], args.HasFlag("--right-byte-mode"), "idmap");
  if (!left || !right) return 1;
  CIDMaps map;
  const bool imported =
      files.size() == 4 ? map.Import(files[2].c_str(), left.get(), right.get())
                        : map.Import(files[2].c_str(), files[3].c_str(), left.get(), right.get());
  if (!imported) {
    fprintf(stderr, "zivor-data idmap: cannot read the word pairs\n");
    return 1;
  }
  const std::string& out = files.back();
  if (!map.Save(out.c_str())) {
    fprintf(stderr, "zivor-data idmap: cannot write %s\n", out.c_str());
    return 1;
  }
  printf("%d targets, %d source handles\n", map.GetSize(), map.GetBound());
  return 0;
}

int ExportWordList(const std::string& binary, const std::string& out) {
  CWordList list;
  if (!list.Load(binary.c_str())) {
    fprintf(stderr, "zivor-data export wordlist: cannot load %s\n", binary.c_str());
    return 1;
  }
  return list.Export(out.c_str()) ? 0 : 1;
}

int ExportIdMap(const std::string& binary, const std::string& out) {
  CIDMaps map;
  if (!map.Load(binary.c_str())) {
    fprintf(stderr, "zivor-data export idmap: cannot load %s\n", binary.c_str());
    return 1;
  }
  return map.Export(out.c_str(), nullptr, nullptr) ? 0 : 1;
}

}  // namespace

ZIVOR_DATA_COMMAND(kWordList);
ZIVOR_DATA_COMMAND(kIdMap);
ZIVOR_DATA_EXPORT("wordlist", "strings by dictionary handle (.wordlist)", ExportWordList);
ZIVOR_DATA_EXPORT("idmap", "handle-to-handle map (.map)", ExportIdMap);
