// zivor-data: builds the binary data files of the analyser from their text
// sources, and dumps them back to text for inspection.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "Command.h"

namespace {

void PrintUsage(FILE* out) {
  fprintf(out, "usage: zivor-data COMMAND ARGS...\n\ncommands:\n");
  std::vector<DataCommand> commands = Commands();
  std::sort(commands.begin(), commands.end(),
            [](const DataCommand& a, const DataCommand& b) {
              return std::string(a.name) < b.name;
            });
  for (const DataCommand& c : commands) {
    fprintf(out, "  %s\n      %s\n", c.usage, c.summary);
  }
  fprintf(out, "  export KIND BINARY OUT.txt\n      write a readable dump of a binary file; KIND is one of:");
  for (const ExportKind& k : ExportKinds()) fprintf(out, " %s", k.kind);
  fprintf(out, "\n");
}

int RunExport(const std::vector<std::string>& args) {
  if (args.size() != 3) {
    fprintf(stderr, "usage: zivor-data export KIND BINARY OUT.txt\n");
    return 2;
  }
  for (const ExportKind& k : ExportKinds()) {
    if (args[0] == k.kind) return k.run(args[1], args[2]);
  }
  fprintf(stderr, "zivor-data export: unknown kind '%s'\n", args[0].c_str());
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    PrintUsage(stdout);
    return 2;
  }
  const std::string name = argv[1];
  if (name == "-h" || name == "--help" || name == "help") {
    PrintUsage(stdout);
    return 0;
  }
  const std::vector<std::string> args(argv + 2, argv + argc);
  if (name == "export") return RunExport(args);
  for (const DataCommand& c : Commands()) {
    if (name == c.name) return c.run(args);
  }
  fprintf(stderr, "zivor-data: unknown command '%s'\n\n", name.c_str());
  PrintUsage(stderr);
  return 2;
}
