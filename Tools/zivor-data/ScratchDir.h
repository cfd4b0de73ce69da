// ScratchDir.h: a temporary directory for the text files a subcommand hands
// to the library's importers, removed with its contents when it goes out of
// scope.
#ifndef ZIVOR_TOOLS_SCRATCH_DIR_H_
#define ZIVOR_TOOLS_SCRATCH_DIR_H_

#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

class ScratchDir {
 public:
  // `prefix` names the directory under the system's temporary directory.
  explicit ScratchDir(const std::string& prefix) {
    std::error_code error;
    std::string pattern =
        (std::filesystem::temp_directory_path(error) / (prefix + "-XXXXXX")).string();
    if (!error && mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~ScratchDir() {
    std::error_code ignored;
    if (!path_.empty() && !keep_) std::filesystem::remove_all(path_, ignored);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  // False when the directory could not be created.
  bool ok() const { return !path_.empty(); }
  const std::string& path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }
  // Leaves the directory in place, for inspection.
  void Keep() { keep_ = true; }

 private:
  std::string path_;
  bool keep_ = false;
};

#endif  // ZIVOR_TOOLS_SCRATCH_DIR_H_
