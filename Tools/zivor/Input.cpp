#include "Input.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace {

void BlankNuls(std::string* text) { std::replace(text->begin(), text->end(), '\0', ' '); }

}  // namespace

bool InputReader::ReadLine(std::istream& in, std::string* line) {
  if (!std::getline(in, *line)) return false;
  if (!line->empty() && line->back() == '\r') line->pop_back();
  BlankNuls(line);
  Check(*line);
  return true;
}

bool InputReader::ReadWholeFile(const std::string& path, std::string* text) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  text->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  if (in.bad()) return false;
  BlankNuls(text);
  Check(*text);
  return true;
}

void InputReader::CheckFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  for (std::string line; !warned_ && ReadLine(in, &line);) {
    // ReadLine checks each line.
  }
}

void InputReader::Check(const std::string& text) {
  if (warned_) return;
  const std::string mismatch = Mismatch(encoding_, text.data(), text.size(), "input");
  if (mismatch.empty()) return;
  fprintf(stderr, "zivor: %s\n", mismatch.c_str());
  warned_ = true;
}

std::string TrimList(const char* list) {
  std::string text = list != nullptr ? list : "";
  const size_t end = text.find_last_not_of(' ');
  text.resize(end == std::string::npos ? 0 : end + 1);
  return text;
}
