#include "TestUtil.h"

#include <iconv.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "Utility/BinaryIO.h"
#include "Utility/Global.h"
#include "Utility/PDAT.h"
#include "Utility/global_linux.h"

namespace testutil {

TempDir::TempDir() {
  std::string pattern = std::filesystem::temp_directory_path().string() + "/zivor-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::File(const std::string& name) const { return path_ + "/" + name; }

std::string TempDir::Write(const std::string& name, const std::string& bytes) const {
  WriteFile(File(name), bytes);
  return File(name);
}

ScopedCwd::ScopedCwd(const std::string& dir) : old_(std::filesystem::current_path().string()) {
  std::filesystem::current_path(dir);
}

ScopedCwd::~ScopedCwd() {
  std::error_code ignored;
  std::filesystem::current_path(old_, ignored);
}

std::string LogOf(const std::function<void()>& action) {
  TempDir dir;
  ScopedCwd cwd(dir.path());
  action();
  return ReadFileBytes(LogFileName(nullptr));
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw std::runtime_error("cannot write " + path);
}

std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

long FileSize(const std::string& path) {
  struct stat st;
  if (stat(path.c_str(), &st) != 0) return -1;
  return static_cast<long>(st.st_size);
}

namespace {

std::string ShellQuote(const std::string& s) {
  std::string q = "'";
  for (char c : s) {
    if (c == '\'') {
      q += "'\\''";
    } else {
      q += c;
    }
  }
  return q + "'";
}

}  // namespace

ToolRun RunTool(const std::string& program, const std::vector<std::string>& args,
                const std::string& dir, const std::string& input) {
  TempDir io;
  WriteFile(io.File("in"), input);
  std::string command = (dir.empty() ? "" : "cd " + ShellQuote(dir) + " && ") + ShellQuote(program);
  for (const std::string& a : args) command += " " + ShellQuote(a);
  command += " < " + ShellQuote(io.File("in")) + " > " + ShellQuote(io.File("out")) + " 2> " +
             ShellQuote(io.File("err"));
  const int status = system(command.c_str());
  ToolRun run;
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.out = ReadFileBytes(io.File("out"));
  run.err = ReadFileBytes(io.File("err"));
  return run;
}

int RunDataTool(const std::vector<std::string>& args, std::string* output) {
  const ToolRun run = RunTool(ZIVOR_DATA_TOOL, args);
  if (output != nullptr) *output = run.out;
  return run.status;
}

std::string CorpusPath() {
  const std::string path = std::string(ZIVOR_SHARED_DIR) + "/corpus/pfr-199801-days01-27.txt";
  return FileSize(path) > 0 ? path : std::string();
}

namespace {

std::string Convert(const std::string& text, const char* to, const char* from) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("iconv_open failed");
  std::string out(text.size() * 4 + 16, '\0');
  char* in_ptr = const_cast<char*>(text.data());
  size_t in_left = text.size();
  char* out_ptr = out.data();
  size_t out_left = out.size();
  const size_t rc = iconv(cd, &in_ptr, &in_left, &out_ptr, &out_left);
  iconv_close(cd);
  if (rc == static_cast<size_t>(-1)) throw std::runtime_error("cannot convert test text");
  out.resize(out.size() - out_left);
  return out;
}

}  // namespace

std::string Gbk(const std::string& utf8) { return Convert(utf8, "GBK", "UTF-8"); }
std::string Utf8(const std::string& gbk) { return Convert(gbk, "UTF-8", "GBK"); }
std::string Big5(const std::string& utf8) { return Convert(utf8, "BIG5", "UTF-8"); }

int Code(const std::string& gbk) {
  const auto byte = [&gbk](size_t i) { return static_cast<unsigned char>(gbk.at(i)); };
  return gbk.size() >= 2 && byte(0) >= 0x80 ? byte(0) * 256 + byte(1) : byte(0);
}

std::string FoldAscii(std::string gbk) {
  for (size_t i = 0; i < gbk.size(); ++i) {
    const unsigned char c = gbk[i];
    if (c >= 0x80 && i + 1 < gbk.size()) ++i;  // a trail byte is never folded
    else if (c >= 'A' && c <= 'Z') gbk[i] = char(c + 32);
  }
  return gbk;
}

std::string Ints(const std::vector<int>& values) {
  std::string bytes(4 * values.size(), '\0');
  for (size_t i = 0; i < values.size(); ++i) {
    StoreLE32(reinterpret_cast<unsigned char*>(&bytes[4 * i]), values[i]);
  }
  return bytes;
}

std::string LexiconBytes(const std::vector<std::vector<std::pair<int, int>>>& lexicon) {
  std::string records, index;
  int n = 0;
  for (const auto& tags : lexicon) {
    index += tags.empty() ? Ints({-1, -1}) : Ints({n, static_cast<int>(tags.size())});
    for (const auto& [tag, count] : tags) {
      records += static_cast<char>(tag) + std::string(3, '\0') + Ints({count});
    }
    n += static_cast<int>(tags.size());
  }
  return Ints({n, static_cast<int>(lexicon.size())}) + records + index;
}

std::string Lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

void ResolvePseudoWords(const CPDAT* dict) {
  const std::pair<int*, const char*> ids[] = {
      {&gSent_StartID, "始##始"}, {&gSent_EndID, "末##末"},   {&gUnknown_x_ID, "未##串"},
      {&gUnknown_nr_ID, "未##人"}, {&gUnknown_ns_ID, "未##地"}, {&gUnknown_nt_ID, "未##团"},
      {&gUnknown_t_ID, "未##时"},  {&gUnknown_m_ID, "未##数"},  {&gUnknown_nz_ID, "未##专"},
      {&gQuatation_LD_ID, "“"},    {&gQuatation_RD_ID, "”"},    {&gQuatation_LS_ID, "‘"},
      {&gQuatation_RS_ID, "’"},    {&gPunctation_WP_ID, "———"}, {&gOneID, "一"}};
  for (const auto& [id, word] : ids) *id = dict != nullptr ? dict->Find(Gbk(word).c_str()) : -1;
}

std::string Patched(std::string bytes, size_t offset, int value) {
  bytes.at(offset + 3);  // throws when the value would not fit
  StoreLE32(reinterpret_cast<unsigned char*>(&bytes[offset]), value);
  return bytes;
}

std::vector<std::string> Prefixes(const std::string& bytes) {
  std::vector<std::string> cuts;
  for (size_t n = 0; n < bytes.size(); ++n) cuts.push_back(bytes.substr(0, n));
  return cuts;
}

}  // namespace testutil
