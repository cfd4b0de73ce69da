// zivor-data charset: builds the character type table ("charset.type") from
// its text form, "CHAR TYPE" per line, and dumps it back to text.
#include <cstdio>
#include <string>

#include "Command.h"
#include "Utility/BinaryIO.h"
#include "Utility/Charset.h"

namespace {

int RunCharset(const std::vector<std::string>& raw);

const DataCommand kCharset{"charset", "charset CHARSET.txt OUT.type",
                           "character type table from \"CHAR TYPE\" lines", RunCharset};

int RunCharset(const std::vector<std::string>& raw) {
  const ArgList args(raw);
  if (!args.ok() || args.positional().size() != 2) return UsageError(kCharset);
  const std::string& text = args.positional()[0];
  const std::string& out = args.positional()[1];
  CCharset charset;
  const int lines = charset.Import(text.c_str());
  if (lines == 0) {
    fprintf(stderr, "zivor-data charset: cannot read or empty: %s\n", text.c_str());
    return 1;
  }
  if (!charset.Save(out.c_str())) {
    fprintf(stderr, "zivor-data charset: cannot write %s\n", out.c_str());
    return 1;
  }
  printf("%d lines\n", lines);
  return 0;
}

int ExportCharset(const std::string& binary, const std::string& out) {
  CCharset charset;
  if (!charset.Load(binary.c_str())) {
    fprintf(stderr, "zivor-data export charset: cannot open %s\n", binary.c_str());
    return 1;
  }
  // Export's result is the stored line count, which may be 0 for a table
  // that was written successfully: check the output separately.
  if (!OpenFile(out.c_str(), "wb")) {
    fprintf(stderr, "zivor-data export charset: cannot write %s\n", out.c_str());
    return 1;
  }
  charset.Export(out.c_str());
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kCharset);
ZIVOR_DATA_EXPORT("charset", "character type table (charset.type)", ExportCharset);
