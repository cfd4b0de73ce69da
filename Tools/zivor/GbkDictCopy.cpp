#include "GbkDictCopy.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "InputFiles.h"
#include "Utility/CodeTran.h"

GbkDictCopy::~GbkDictCopy() {
  if (!path_.empty()) unlink(path_.c_str());
}

bool GbkDictCopy::Make(const std::string& source, const Encoding& encoding,
                       const std::string& data_dir, std::string* error) {
  const std::string unreadable = Unreadable(source);
  std::ifstream in;
  if (unreadable.empty()) in.open(source, std::ios::binary);
  if (!in.is_open()) {
    *error = "cannot open " + source + ": " + (unreadable.empty() ? "read error" : unreadable);
    return false;
  }
  std::string pattern = (std::filesystem::temp_directory_path() / "zivor-dict-XXXXXX").string();
  const int fd = mkstemp(pattern.data());
  if (fd < 0) {
    *error = "cannot create a temporary file";
    return false;
  }
  close(fd);
  path_ = pattern;
  const CCodeTran tran(data_dir.c_str(), encoding.code);
  std::ofstream out(path_, std::ios::binary);
  std::string line, gbk;
  std::vector<int> offsets;
  for (unsigned long number = 1; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!IsWellFormed(encoding.layout, line.data(), line.size())) {
      fprintf(stderr, "zivor: %s:%lu is not valid %s; left out\n", source.c_str(), number,
              encoding.label);
      continue;
    }
    tran.ToGBK(line.data(), line.size(), &gbk, &offsets);
    out << gbk << '\n';
  }
  if (!out.flush()) *error = "cannot write a temporary copy of " + source;
  return static_cast<bool>(out);
}
