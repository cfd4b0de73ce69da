#include "DataStage.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "FieldDictFiles.h"
#include "GbkDictCopy.h"
#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"
#include "Utility/trie.h"

namespace fs = std::filesystem;

namespace {

constexpr char kConfigure[] = "Configure.xml";
constexpr char kUserDict[] = "UserDict.pdat";
constexpr char kNewWords[] = "NewWord.lst";
constexpr char kFieldDict[] = "FieldDict";
constexpr char kGranDict[] = "GranDict";

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

// The XML element that sets `key` to `value`.
std::string Element(const char* key, const std::string& value) {
  return std::string("<") + key + ">" + value + "</" + key + ">\n";
}

// Whether `name` is a file of the dictionary STEM.pdat and STEM.pos.
bool IsDictFile(const std::string& name, const char* stem) {
  return name == std::string(stem) + ".pdat" || name == std::string(stem) + ".pos";
}

// Whether the stage builds its own copy of the data file `name`.
bool Replaced(const StageRequest& request, const std::string& name) {
  if (name == kConfigure || name == kUserDict || name == kNewWords) return true;
  if (request.field_dict.empty()) return false;
  return IsDictFile(name, kFieldDict) || (!request.coarse && IsDictFile(name, kGranDict));
}

// Replaces `link` (a link or nothing) by a symbolic link to `target`.
bool Relink(const std::string& target, const std::string& link, std::string* error) {
  std::error_code ec;
  fs::remove(link, ec);
  fs::create_symlink(target, link, ec);
  if (ec) *error = "cannot link " + link + ": " + ec.message();
  return !ec;
}

}  // namespace

DataStage::~DataStage() {
  if (dir_.empty()) return;
  std::error_code ignored;
  fs::remove_all(dir_, ignored);
}

std::string DataStage::StagedFile(const char* name) const { return dir_ + "/Data/" + name; }

bool DataStage::Build(const StageRequest& request, std::string* error) {
  std::string pattern = (fs::temp_directory_path() / "zivor-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    *error = "cannot create a temporary directory in " + fs::temp_directory_path().string();
    return false;
  }
  dir_ = pattern;
  return LinkData(request, error) && StageUserDict(request, error) &&
         StageFieldDicts(request, error) && WriteConfiguration(request, error) &&
         Relink(request.state + "/" + kNewWords, StagedFile(kNewWords), error);
}

bool DataStage::LinkData(const StageRequest& request, std::string* error) {
  const fs::path data = fs::path(dir_) / "Data";
  std::error_code ec;
  fs::create_directory(data, ec);
  for (fs::directory_iterator it(request.source, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (Replaced(request, name)) continue;
    fs::create_symlink(it->path(), data / name, ec);
  }
  if (ec) *error = "cannot read " + request.source + ": " + ec.message();
  return !ec;
}

bool DataStage::StageUserDict(const StageRequest& request, std::string* error) {
  saved_user_dict_ = request.state + "/" + kUserDict;
  const std::string staged = StagedFile(kUserDict);
  if (request.user_dict.empty()) {
    const std::string own = request.source + "/" + kUserDict;
    user_dict_ = Exists(saved_user_dict_) ? saved_user_dict_ : Exists(own) ? own : "";
    return user_dict_.empty() || Relink(user_dict_, staged, error);
  }
  GbkDictCopy gbk;
  if (!gbk.Make(request.user_dict, request.encoding, request.source, error)) return false;
  CTrie trie;
  if (trie.Import(gbk.path().c_str(), nullptr) == 0) {
    *error = "no word in user dictionary " + request.user_dict;
    return false;
  }
  if (!trie.Save(staged.c_str())) {
    *error = "cannot write the compiled user dictionary " + staged;
    return false;
  }
  user_dict_ = request.user_dict;
  saved_user_dict_ = staged;
  return true;
}

bool DataStage::StageFieldDicts(const StageRequest& request, std::string* error) const {
  const std::string gran = request.source + "/" + kGranDict + ".pdat";
  if (request.coarse && !Exists(gran)) {
    *error = "no coarse-grained dictionary " + gran + " (zivor-data coarse builds it)";
    return false;
  }
  if (request.field_dict.empty()) return true;
  const std::string stem = dir_ + "/Data/";
  return BuildFieldDict(request.field_dict, request.encoding, request.source, stem + kFieldDict,
                        error) &&
         (request.coarse ||
          BuildFieldDict("", request.encoding, request.source, stem + kGranDict, error));
}

bool DataStage::WriteConfiguration(const StageRequest& request, std::string* error) const {
  const std::string from = request.source + "/" + kConfigure;
  char* text = nullptr;
  const int size = ReadFile(from.c_str(), &text);
  std::unique_ptr<char[]> owner(text);
  if (size <= 0) {
    *error = "cannot read " + from;
    return false;
  }
  std::string settings;
  if (!user_dict_.empty()) settings += Element("UserDict", "on");
  if (request.coarse || !request.field_dict.empty()) {
    settings += Element("GranularityContorl", "on");
  }
  if (!request.field_dict.empty()) settings += Element("FieldDict", "on");
  if (!request.delimiter.empty()) settings += Element("POSDelimiter", request.delimiter);
  if (!request.boundary.empty()) settings += Element("WordBoundary", request.boundary);
  const std::string to = StagedFile(kConfigure);
  FilePtr out = OpenFile(to.c_str(), "wb");
  if (!out || fputs(settings.c_str(), out.get()) < 0 ||
      fwrite(text, 1, size, out.get()) != static_cast<size_t>(size)) {
    *error = "cannot write " + to;
    return false;
  }
  return true;
}

bool DataStage::SaveToState(std::string* error) const {
  const std::string staged = StagedFile(kUserDict);
  if (saved_user_dict_ == staged) return true;  // the private copy of --user-dict
  return Relink(saved_user_dict_, staged, error);
}
