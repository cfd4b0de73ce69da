#include "FieldDictList.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>

#include "Utility/CharScan.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"

namespace {

constexpr char kDefaultTag[] = "n";
constexpr char kUtf8ByteOrderMark[] = "\xef\xbb\xbf";

// ASCII letters in lower case, as the dictionary reads them; the trail byte
// of a two-byte character is left alone.
std::string Folded(const std::string& word) {
  std::string folded = word;
  for (size_t i = 0; i < folded.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(folded[i]);
    if (c >= 0x80) {
      ++i;
    } else if (c >= 'A' && c <= 'Z') {
      folded[i] = static_cast<char>(c - 'A' + 'a');
    }
  }
  return folded;
}

// A file removed when the object dies: the text the importers read.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
  ~TemporaryFile() { remove(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

bool WriteText(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  return static_cast<bool>(out.flush());
}

// Saves through `save` into a file beside `path`, then renames it over
// `path`, so that a link at `path` is replaced rather than written through.
template <class Save>
bool SaveReplacing(const std::string& path, Save save, std::string* error) {
  const std::string staged = path + ".new";
  if (save(staged.c_str()) && rename(staged.c_str(), path.c_str()) == 0) return true;
  remove(staged.c_str());
  *error = "cannot write " + path;
  return false;
}

}  // namespace

FieldDictList::FieldDictList(const CPOSmap& tags) : tags_(tags) {}

bool FieldDictList::AddLine(const std::string& line, std::string* error) {
  std::istringstream fields(line);
  std::string word, tag = kDefaultTag, extra;
  if (!(fields >> word)) return true;  // white space only
  fields >> tag;
  if (fields >> extra) {
    *error = "expected \"WORD [TAG]\", found more fields";
    return false;
  }
  if (word.size() > kMaxWordBytes) {
    *error = "word longer than " + std::to_string(kMaxWordBytes) + " bytes";
    return false;
  }
  if (line.find('\0') != std::string::npos || !IsWellFormed(TextLayout::kGbk, word.data(), word.size())) {
    *error = "the word is not GBK text";
    return false;
  }
  const unsigned char id = tags_.GetID(tag.c_str());
  if (id == kNoTag) {
    *error = "unknown tag \"" + tag + "\"";
    return false;
  }
  if (!folded_.insert(Folded(word)).second) {
    ++repeated_;
    return true;
  }
  entries_.push_back({word, id});
  return true;
}

bool FieldDictList::Read(std::istream& in, const std::string& name, std::string* error,
                         const Converter& convert) {
  std::string line, gbk;
  for (unsigned long number = 1; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (number == 1 && line.compare(0, 3, kUtf8ByteOrderMark) == 0) line.erase(0, 3);
    std::string reason;
    const std::string* text = &line;
    if (convert) {
      if (!convert(line, &gbk)) reason = "the line has no GBK form";
      text = &gbk;
    }
    if (reason.empty()) AddLine(*text, &reason);
    if (!reason.empty()) {
      *error = name + ":" + std::to_string(number) + ": " + reason;
      return false;
    }
  }
  if (in.bad()) {
    *error = "cannot read " + name;
    return false;
  }
  return true;
}

bool FieldDictList::Write(const std::string& stem, std::string* error) const {
  const std::string dict_path = stem + ".pdat";
  return WriteDictionary(dict_path, error) && WriteLexicon(dict_path, stem + ".pos", error);
}

// Handle i + 1 for the i-th word, by the dictionary's own importer; every
// word must then be found under its handle.
bool FieldDictList::WriteDictionary(const std::string& path, std::string* error) const {
  std::string words;
  for (const Entry& entry : entries_) words += entry.word + "\n";
  const TemporaryFile list(path + ".words");
  if (!WriteText(list.path(), words)) {
    *error = "cannot write " + list.path();
    return false;
  }
  auto dict = std::make_unique<CPDAT>();  // large: keep it off the stack
  dict->SetImportProgress(false);
  if (dict->Import(list.path().c_str()) != static_cast<int>(entries_.size())) {
    *error = "cannot build the dictionary " + path;
    return false;
  }
  for (size_t i = 0; i < entries_.size(); ++i) {
    const std::string& word = entries_[i].word;
    if (dict->Find(word.c_str()) == static_cast<int>(i) + 1) continue;
    *error = "the dictionary does not find \"" + word + "\"";
    // The double array cannot find a one-character word of its most
    // frequent character when no longer word holds that character.
    const bool one_character =
        word.size() == 1 || (word.size() == 2 && static_cast<unsigned char>(word[0]) >= 0x80);
    if (one_character) *error += " (a word of one character needs a longer word holding it)";
    return false;
  }
  return SaveReplacing(path, [&](const char* to) { return dict->Save(to); }, error);
}

// "word tag 1" lines in handle order, tag names through the tag map.
bool FieldDictList::WriteLexicon(const std::string& dict_path, const std::string& path,
                                 std::string* error) const {
  auto dict = std::make_unique<CPDAT>();
  if (!dict->Load(dict_path.c_str())) {
    *error = "cannot read back " + dict_path;
    return false;
  }
  std::string lines;
  for (const Entry& entry : entries_) {
    lines += entry.word + " " + tags_.GetPOS(entry.tag) + " 1\n";
  }
  const TemporaryFile lexicon(path + ".lexicon");
  if (!WriteText(lexicon.path(), lines)) {
    *error = "cannot write " + lexicon.path();
    return false;
  }
  CPOS pos;
  if (pos.Import(lexicon.path().c_str(), dict.get(), &tags_) != static_cast<int>(entries_.size())) {
    *error = "cannot build the tag lexicon " + path;
    return false;
  }
  return SaveReplacing(path, [&](const char* to) { return pos.Save(to); }, error);
}
