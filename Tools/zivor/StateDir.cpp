#include "StateDir.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

std::string HomeDirectory() {
  const char* home = getenv("HOME");
  if (home != nullptr && home[0] == '/') return home;
  const passwd* entry = getpwuid(getuid());
  return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "";
}

bool CreateDirectories(const fs::path& dir, std::string* error) {
  std::error_code ec;
  fs::create_directories(dir, ec);
  if (!ec && access(dir.c_str(), W_OK | X_OK) == 0) return true;
  *error = "cannot create the state directory " + dir.string() + ": " +
           (ec ? ec.message() : std::string("not writable")) +
           "; point XDG_STATE_HOME at a writable directory";
  return false;
}

}  // namespace

bool StateDir::Open(std::string* error) {
  const char* xdg = getenv("XDG_STATE_HOME");
  fs::path root;
  if (xdg != nullptr && xdg[0] == '/') {
    root = fs::path(xdg) / "zivor";
  } else {
    const std::string home = HomeDirectory();
    if (home.empty()) {
      *error = "no home directory for the state directory; set XDG_STATE_HOME";
      return false;
    }
    root = fs::path(home) / ".local/state/zivor";
  }
  if (!CreateDirectories(root, error)) return false;
  root_ = root.string();
  return true;
}

std::string StateDir::ForData(const std::string& data, std::string* error) const {
  const fs::path dir = fs::path(root_) / "data" / fs::path(data).relative_path();
  return CreateDirectories(dir, error) ? dir.string() : std::string();
}
