#include "InputFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// The regular files below `dir` (the names as `dir` spells them) into
// *files; false, reported, for each directory that cannot be listed.
bool Walk(const fs::path& dir, std::vector<std::string>* files) {
  std::error_code ec;
  fs::directory_iterator it(dir, ec);
  bool complete = true;
  for (const fs::directory_iterator end; !ec && it != end; it.increment(ec)) {
    const fs::file_status status = it->symlink_status(ec);
    if (ec) break;
    if (fs::is_directory(status)) {
      complete = Walk(it->path(), files) && complete;
    } else if (fs::is_regular_file(status) || fs::is_regular_file(it->status(ec))) {
      files->push_back(it->path().string());
    }
    ec.clear();
  }
  if (!ec) return complete;
  fprintf(stderr, "zivor: cannot read the directory %s: %s\n", dir.c_str(), ec.message().c_str());
  return false;
}

std::string AbsolutePath(const std::string& name) {
  std::error_code ec;
  const fs::path path = fs::absolute(name, ec);
  return ec ? name : path.string();
}

}  // namespace

bool ExpandInputs(const std::vector<std::string>& names, std::vector<InputFile>* inputs) {
  bool complete = true;
  for (const std::string& name : names) {
    std::error_code ec;
    if (name == "-" || !fs::is_directory(name, ec)) {
      inputs->push_back({name, name == "-" ? name : AbsolutePath(name)});
      continue;
    }
    std::vector<std::string> files;
    complete = Walk(name, &files) && complete;
    if (files.empty()) fprintf(stderr, "zivor: %s holds no files\n", name.c_str());
    std::sort(files.begin(), files.end());
    for (const std::string& file : files) inputs->push_back({file, AbsolutePath(file)});
  }
  if (names.empty()) inputs->push_back({"-", "-"});
  return complete;
}

std::string Unreadable(const std::string& path) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return strerror(errno);
  if (S_ISDIR(st.st_mode)) return "is a directory";
  const int fd = open(path.c_str(), O_RDONLY);
  if (fd < 0) return strerror(errno);
  close(fd);
  return "";
}

void ReportUnreadable(const std::string& name, const std::string& path) {
  std::string reason = Unreadable(path);
  if (reason.empty()) reason = "read error";
  fprintf(stderr, "zivor: cannot open %s: %s\n", name.c_str(), reason.c_str());
}

bool OpenInput(const InputFile& input, std::ifstream* in) {
  if (Unreadable(input.path).empty()) in->open(input.path, std::ios::binary);
  if (in->is_open()) return true;
  ReportUnreadable(input.name, input.path);
  return false;
}

int64_t TotalBytes(const std::vector<InputFile>& inputs) {
  int64_t total = 0;
  for (const InputFile& input : inputs) {
    struct stat st;
    const int status = input.IsStandardInput() ? fstat(0, &st) : stat(input.path.c_str(), &st);
    if (status != 0 || !S_ISREG(st.st_mode)) return -1;
    total += st.st_size;
  }
  return total;
}
