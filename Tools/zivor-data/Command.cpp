#include "Command.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

std::vector<DataCommand>& CommandTable() {
  static std::vector<DataCommand> table;
  return table;
}

std::vector<ExportKind>& ExportTable() {
  static std::vector<ExportKind> table;
  return table;
}

}  // namespace

bool RegisterCommand(const DataCommand& command) {
  CommandTable().push_back(command);
  return true;
}

bool RegisterExport(const ExportKind& kind) {
  ExportTable().push_back(kind);
  return true;
}

const std::vector<DataCommand>& Commands() { return CommandTable(); }
const std::vector<ExportKind>& ExportKinds() { return ExportTable(); }

ArgList::ArgList(const std::vector<std::string>& args,
                 const std::vector<std::string>& value_options) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (arg.size() < 3 || arg.compare(0, 2, "--") != 0) {
      positional_.push_back(arg);
    } else if (std::find(value_options.begin(), value_options.end(), arg) !=
               value_options.end()) {
      if (i + 1 == args.size()) {
        ok_ = false;
      } else {
        values_.emplace_back(arg, args[++i]);
      }
    } else {
      flags_.push_back(arg);
    }
  }
}

bool ArgList::HasFlag(const std::string& flag) const {
  return std::find(flags_.begin(), flags_.end(), flag) != flags_.end();
}

std::string ArgList::Option(const std::string& name) const {
  for (const auto& [key, value] : values_) {
    if (key == name) return value;
  }
  return std::string();
}

int UsageError(const DataCommand& command) {
  fprintf(stderr, "usage: zivor-data %s\n", command.usage);
  return 2;
}

bool ParseDayRange(const std::string& range, int* first, int* last) {
  if (range.empty()) return true;
  const int fields = sscanf(range.c_str(), "%d-%d", first, last);
  if (fields == 1) *last = *first;
  return fields >= 1 && *first <= *last;
}
