#include "LibraryLog.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "Utility/global_linux.h"

namespace {

long FileSize(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 ? static_cast<long>(st.st_size) : 0;
}

// A log line without its "[date time] " stamp.
std::string Message(const std::string& line) {
  const size_t end = line.rfind("] ", 21);
  std::string message = line[0] == '[' && end != std::string::npos ? line.substr(end + 2) : line;
  while (!message.empty() && (message.back() == ' ' || message.back() == '\n')) message.pop_back();
  return message;
}

}  // namespace

std::string LibraryLogPath() {
  char buffer[4096];
  const std::string name = LogFileName(nullptr);
  return getcwd(buffer, sizeof buffer) != nullptr ? std::string(buffer) + "/" + name : name;
}

LogMark::LogMark() : path_(LibraryLogPath()), size_(FileSize(path_)) {}

std::vector<std::string> LogMark::Messages(size_t limit) const {
  std::ifstream in(path_, std::ios::binary);
  in.seekg(size_);
  std::vector<std::string> messages;
  for (std::string line; std::getline(in, line);) {
    const std::string message = Message(line);
    if (message.empty()) continue;
    if (message[0] == '/' && !messages.empty()) {
      messages.back() += " " + message;
    } else {
      messages.push_back(message);
    }
  }
  if (messages.size() > limit) messages.erase(messages.begin(), messages.end() - limit);
  return messages;
}

std::string LogMark::Reason(const std::string& given, const std::string& named) const {
  std::string reason;
  for (const std::string& message : Messages()) reason += (reason.empty() ? "" : "; ") + message;
  if (reason.empty()) return "see " + path_;
  for (size_t at = given.empty() ? std::string::npos : reason.find(given); at != std::string::npos;
       at = reason.find(given, at + named.size())) {
    reason.replace(at, given.size(), named);
  }
  return reason;
}
