#include "DataStage.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "GbkDictCopy.h"
#include "Options.h"
#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"
#include "Utility/trie.h"

namespace fs = std::filesystem;

namespace {

// Configure.xml with the user dictionary switched on: the first "UserDict"
// element of the text is the one that counts, so one put in front wins.
bool WriteConfiguration(const fs::path& from, const fs::path& to) {
  char* text = nullptr;
  const int size = ReadFile(from.c_str(), &text);
  std::unique_ptr<char[]> owner(text);
  if (size <= 0) return false;
  FilePtr out = OpenFile(to.c_str(), "wb");
  if (!out) return false;
  fputs("<UserDict>on</UserDict>\n", out.get());
  return fwrite(text, 1, size, out.get()) == static_cast<size_t>(size);
}

}  // namespace

DataStage::~DataStage() {
  if (dir_.empty()) return;
  std::error_code ignored;
  fs::remove_all(dir_, ignored);
}

bool DataStage::Build(const std::string& base_dir, const std::string& user_dict,
                      const Encoding& encoding, std::string* error) {
  const fs::path source = fs::absolute(DataDir(base_dir));
  std::string pattern = (fs::temp_directory_path() / "zivor-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    *error = "cannot create a temporary directory";
    return false;
  }
  dir_ = pattern;
  const fs::path data = fs::path(dir_) / "Data";
  std::error_code ec;
  fs::create_directory(data, ec);
  for (fs::directory_iterator it(source, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (name == "Configure.xml" || name == "UserDict.pdat") continue;
    fs::create_symlink(it->path(), data / name, ec);
  }
  if (ec) {
    *error = "cannot read " + source.string() + ": " + ec.message();
    return false;
  }
  if (!WriteConfiguration(source / "Configure.xml", data / "Configure.xml")) {
    *error = "cannot read " + (source / "Configure.xml").string();
    return false;
  }
  GbkDictCopy gbk;
  if (!gbk.Make(user_dict, encoding, source.string(), error)) return false;
  CTrie trie;
  if (trie.Import(gbk.path().c_str(), nullptr) == 0) {
    *error = "no word in user dictionary " + user_dict;
    return false;
  }
  if (!trie.Save((data / "UserDict.pdat").c_str())) {
    *error = "cannot write the compiled user dictionary";
    return false;
  }
  return true;
}
