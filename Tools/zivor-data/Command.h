// Command.h: the registry of zivor-data subcommands.
//
// Each subcommand lives in its own source file and registers itself with
// ZIVOR_DATA_COMMAND; a binary format that can be dumped for inspection
// registers an export kind with ZIVOR_DATA_EXPORT, which `zivor-data export
// KIND BINARY OUT.txt` dispatches to. main.cpp only parses the first word.
#ifndef ZIVOR_TOOLS_COMMAND_H_
#define ZIVOR_TOOLS_COMMAND_H_

#include <string>
#include <vector>

struct DataCommand {
  const char* name;     // the subcommand word
  const char* usage;    // its argument synopsis
  const char* summary;  // one line of help
  // Arguments after the subcommand word. Returns the process exit status.
  int (*run)(const std::vector<std::string>& args);
};

struct ExportKind {
  const char* kind;     // the word after "export"
  const char* summary;  // what the binary is
  // Loads the binary and writes its text dump. Returns the exit status.
  int (*run)(const std::string& binary, const std::string& out);
};

bool RegisterCommand(const DataCommand& command);
bool RegisterExport(const ExportKind& kind);
const std::vector<DataCommand>& Commands();
const std::vector<ExportKind>& ExportKinds();

#define ZIVOR_DATA_CONCAT_(a, b) a##b
#define ZIVOR_DATA_CONCAT(a, b) ZIVOR_DATA_CONCAT_(a, b)
#define ZIVOR_DATA_COMMAND(...)                                              \
  static const bool ZIVOR_DATA_CONCAT(zivor_data_command_, __LINE__) =      \
      RegisterCommand(DataCommand{__VA_ARGS__})
#define ZIVOR_DATA_EXPORT(...)                                               \
  static const bool ZIVOR_DATA_CONCAT(zivor_data_export_, __LINE__) =       \
      RegisterExport(ExportKind{__VA_ARGS__})

// Small argument helpers shared by the subcommands.
class ArgList {
 public:
  // `value_options` names the options that take a value ("--map"); every
  // other argument starting with "--" is a flag.
  ArgList(const std::vector<std::string>& args,
          const std::vector<std::string>& value_options = {});
  // Arguments that are neither flags nor option values, in order.
  const std::vector<std::string>& positional() const { return positional_; }
  bool HasFlag(const std::string& flag) const;
  // Value of "--name VALUE"; empty when absent.
  std::string Option(const std::string& name) const;
  // False when an option that takes a value came last without one.
  bool ok() const { return ok_; }

 private:
  std::vector<std::string> positional_;
  std::vector<std::string> flags_;
  std::vector<std::pair<std::string, std::string>> values_;
  bool ok_ = true;
};

// Parses a day range of the month, "D1-D2" or a single day "D"; "" leaves
// *first and *last as they are. False when the text is no such range.
bool ParseDayRange(const std::string& range, int* first, int* last);

// Prints "usage: zivor-data USAGE" to stderr and returns the usage status 2.
int UsageError(const DataCommand& command);

#endif  // ZIVOR_TOOLS_COMMAND_H_
