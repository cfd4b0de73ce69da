#include "Session.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "InputFiles.h"
#include "LibraryLog.h"
#include "Utility/CodeTran.h"
#include "Utility/global_linux.h"
#include "zivor/ZIVOR.h"

#ifndef ZIVOR_SOURCE_DATA_DIR
#define ZIVOR_SOURCE_DATA_DIR ""
#endif
#ifndef ZIVOR_DATA_FROM_BIN
#define ZIVOR_DATA_FROM_BIN "../share/zivor"
#endif

namespace fs = std::filesystem;

namespace {

bool Report(const std::string& message) {
  fprintf(stderr, "zivor: %s\n", message.c_str());
  return false;
}

// What is wrong with the configuration text, "" when it looks whole.
std::string ConfigurationDamage(const std::string& path) {
  char* text = nullptr;
  const int size = ReadFile(path.c_str(), &text);
  std::unique_ptr<char[]> owner(text);
  if (size <= 0) return "it is empty";
  if (strstr(text, "<Configure>") == nullptr || strstr(text, "</Configure>") == nullptr) {
    return "it holds no <Configure> ... </Configure> element";
  }
  return "";
}

// The data directory and its configuration, checked before the library
// tries them.
bool CheckData(const std::string& data) {
  std::error_code ec;
  if (!fs::is_directory(data, ec)) {
    return Report("no data directory " + data + ": " +
                  (ec ? ec.message() : std::string("not a directory")) +
                  "; give the directory that holds Data with -d");
  }
  const std::string config = data + "/Configure.xml";
  const std::string unreadable = Unreadable(config);
  if (!unreadable.empty()) return Report("cannot read " + config + ": " + unreadable);
  const std::string damage = ConfigurationDamage(config);
  if (!damage.empty()) return Report(config + " is damaged: " + damage);
  return true;
}

// The library starts without a missing translation table (and then reads
// every character as unknown); the command refuses to.
bool HasTables(const std::string& data, const Encoding& encoding) {
  for (const std::string& name : CCodeTran::TableFileNames(encoding.code)) {
    if (access((data + "/" + name).c_str(), R_OK) != 0) {
      return Report(data + " has no " + encoding.label + " table " + name +
                    "; rebuild the tables with \"zivor-data codetables\" or choose another "
                    "encoding with -e");
    }
  }
  return true;
}

// Whether the library logged since `mark` that it goes on without the
// granularity or field dictionary, which a run of --coarse or --field-dict
// must not.
bool DictionaryPassFailed(const LogMark& mark) {
  for (std::string message : mark.Messages(20)) {
    for (char& c : message) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    if (message.find("granularity") != std::string::npos ||
        message.find("field dictionary") != std::string::npos ||
        message.find("filed dictionary") != std::string::npos) {
      return true;
    }
  }
  return false;
}

std::string ExecutableDir() {
  std::error_code ec;
  const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  return ec ? std::string() : exe.parent_path().string();
}

}  // namespace

std::string DefaultDataBase() {
  const std::string bin = ExecutableDir();
  if (!bin.empty()) {
    std::error_code ec;
    const fs::path installed = fs::weakly_canonical(fs::path(bin) / ZIVOR_DATA_FROM_BIN, ec);
    if (!ec && fs::is_directory(installed / "Data", ec)) return installed.string();
  }
  return ZIVOR_SOURCE_DATA_DIR;
}

Session::~Session() {
  if (started_) ZIVOR_Exit();
}

bool Session::Start(const Options& options) {
  const std::string data = DataDir(options.dir);
  if (!CheckData(data)) return false;
  std::string error;
  if (!state_.Open(&error)) return Report(error);
  if (chdir(state_.root().c_str()) != 0) {
    return Report("cannot enter the state directory " + state_.root() + ": " + strerror(errno));
  }
  StageRequest request;
  request.source = data;
  request.state = state_.ForData(data, &error);
  if (request.state.empty()) return Report(error);
  request.user_dict = options.user_dict;
  request.field_dict = options.field_dict;
  request.coarse = options.coarse;
  request.encoding = options.encoding;
  request.delimiter = options.delimiter;
  request.boundary = options.boundary;
  if (!stage_.Build(request, &error)) return Report(error);
  return Initialise(options);
}

bool Session::Initialise(const Options& options) {
  const std::string data = DataDir(options.dir);
  const LogMark mark;
  if (!ZIVOR_Init(stage_.dir().c_str(), options.encoding.code)) {
    return Report("cannot initialise from " + data + ": " +
                  mark.Reason(DataDir(stage_.dir()), data));
  }
  started_ = true;
  if ((options.coarse || !options.field_dict.empty()) && DictionaryPassFailed(mark)) {
    return Report("cannot use the dictionaries asked for: " +
                  mark.Reason(DataDir(stage_.dir()), data));
  }
  return HasTables(data, options.encoding);
}
