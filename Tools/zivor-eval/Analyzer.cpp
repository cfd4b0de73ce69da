// Analyzer.cpp: the library session of an evaluation (Analyzer.h).
#include "Analyzer.h"

#include <stdlib.h>
#include <string.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "zivor/ZIVOR.h"

namespace eval {
namespace {

namespace fs = std::filesystem;

class Stopwatch {
 public:
  explicit Stopwatch(double* total) : total_(total), begin_(Clock::now()) {}
  ~Stopwatch() { *total_ += std::chrono::duration<double>(Clock::now() - begin_).count(); }
  Stopwatch(const Stopwatch&) = delete;
  Stopwatch& operator=(const Stopwatch&) = delete;

 private:
  using Clock = std::chrono::steady_clock;
  double* total_;
  Clock::time_point begin_;
};

std::string ReadText(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The configuration with person recognition off, whether or not it named it.
std::string PersonOff(std::string config) {
  const std::string open = "<Person>", close = "</Person>";
  const size_t begin = config.find(open);
  const size_t end = begin == std::string::npos ? begin : config.find(close, begin);
  if (end != std::string::npos) {
    return config.replace(begin + open.size(), end - begin - open.size(), "off");
  }
  const size_t root_end = config.rfind("</Configure>");
  const std::string item = "  <Person>off</Person>\n";
  return root_end == std::string::npos ? config + item : config.insert(root_end, item);
}

}  // namespace

Analyzer::Analyzer(const std::string& dir, bool person, int encoding) {
  if (!person && !MakePersonOffCopy(dir)) return;
  const std::string root = person ? dir : temp_dir_;
  if (!LoadCoarseMap(root + "/Data")) return;
  initialised_ = ZIVOR_Init(root.c_str(), encoding);
  if (!initialised_) {
    error_ = "ZIVOR_Init failed on " + root + " (the reason is in the day's log)";
    return;
  }
  ZIVOR_SetPOSmap(0);
}

Analyzer::~Analyzer() {
  if (initialised_) ZIVOR_Exit();
  std::error_code ignored;
  if (!temp_dir_.empty()) fs::remove_all(temp_dir_, ignored);
}

bool Analyzer::MakePersonOffCopy(const std::string& dir) {
  char pattern[] = "/tmp/zivor-eval-XXXXXX";
  if (mkdtemp(pattern) == nullptr) {
    error_ = "cannot create a temporary directory";
    return false;
  }
  temp_dir_ = pattern;
  const fs::path source = fs::absolute(fs::path(dir) / "Data");
  const fs::path copy = fs::path(temp_dir_) / "Data";
  std::error_code ec;
  fs::create_directory(copy, ec);
  for (fs::directory_iterator it(source, ec), end; !ec && it != end; it.increment(ec)) {
    const fs::path name = it->path().filename();
    if (name != "Configure.xml") fs::create_symlink(it->path(), copy / name, ec);
  }
  if (!ec) {
    std::ofstream(copy / "Configure.xml", std::ios::binary)
        << PersonOff(ReadText(source / "Configure.xml"));
  }
  if (ec) error_ = "cannot copy " + source.string() + ": " + ec.message();
  return !ec;
}

bool Analyzer::LoadCoarseMap(const std::string& data_dir) {
  std::istringstream lines(ReadText(fs::path(data_dir) / "PKU.map"));
  std::string line;
  while (std::getline(lines, line)) {
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
    if (!line.empty()) coarse_.push_back(line);
  }
  if (coarse_.empty()) error_ = "no tag map " + data_dir + "/PKU.map";
  return !coarse_.empty();
}

std::vector<SystemWord> Analyzer::Analyse(const std::string& text) {
  int count = 0;
  const result_t* results;
  {
    Stopwatch watch(&seconds_);
    results = ZIVOR_ParagraphProcessA(text.c_str(), &count, false);
  }
  std::vector<SystemWord> words;
  words.reserve(count);
  for (int i = 0; i < count; ++i) {
    const result_t& r = results[i];
    if (r.length <= 0) continue;
    SystemWord word;
    word.start = r.start;
    word.end = r.start + r.length;
    word.refined.assign(r.sPOS, strnlen(r.sPOS, sizeof r.sPOS));
    if (r.iPOS >= 0 && r.iPOS < static_cast<int>(coarse_.size())) word.coarse = coarse_[r.iPOS];
    words.push_back(word);
  }
  return words;
}

void Analyzer::Segment(const std::string& text, bool tagged) {
  Stopwatch watch(&seconds_);
  ZIVOR_ParagraphProcess(text.c_str(), tagged ? 1 : 0);
}

}  // namespace eval
