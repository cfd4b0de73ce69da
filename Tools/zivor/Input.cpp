#include "Input.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace {

void BlankNuls(std::string* text) { std::replace(text->begin(), text->end(), '\0', ' '); }

}  // namespace

bool ReadLine(std::istream& in, std::string* line) {
  if (!std::getline(in, *line)) return false;
  if (!line->empty() && line->back() == '\r') line->pop_back();
  BlankNuls(line);
  return true;
}

bool ReadWholeFile(const std::string& path, std::string* text) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  text->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  if (in.bad()) return false;
  BlankNuls(text);
  return true;
}

std::string TrimList(const char* list) {
  std::string text = list != nullptr ? list : "";
  const size_t end = text.find_last_not_of(' ');
  text.resize(end == std::string::npos ? 0 : end + 1);
  return text;
}

void ReportUnreadable(const std::string& path) {
  fprintf(stderr, "zivor: cannot open %s\n", path.c_str());
}
