// zivor-data fielddict: builds a field or granularity dictionary (OUT.pdat
// and OUT.pos) from a "WORD [TAG]" word list, in GBK or UTF-8.
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "Command.h"
#include "FieldDictList.h"
#include "ModelLexicon.h"
#include "Utility/POSmap.h"

namespace {

int RunFieldDict(const std::vector<std::string>& raw);

const DataCommand kFieldDict{
    "fielddict", "fielddict WORDS.txt OUT --map TAGS.map [--encoding gbk|utf8]",
    "field or granularity dictionary OUT.pdat and OUT.pos from \"WORD [TAG]\" lines "
    "(tag n when none; the first line of a word wins)",
    RunFieldDict};

int Fail(const std::string& message) {
  fprintf(stderr, "zivor-data fielddict: %s\n", message.c_str());
  return 1;
}

int RunFieldDict(const std::vector<std::string>& raw) {
  const ArgList args(raw, {"--map", "--encoding"});
  const std::string encoding = args.Option("--encoding");
  if (!args.ok() || args.positional().size() != 2 || args.Option("--map").empty() ||
      (!encoding.empty() && encoding != "gbk" && encoding != "utf8")) {
    return UsageError(kFieldDict);
  }
  const std::string& text = args.positional()[0];
  const std::string& out = args.positional()[1];
  CPOSmap tags;
  if (!tags.Load(args.Option("--map").c_str())) {
    return Fail("cannot read tag map " + args.Option("--map"));
  }
  std::ifstream in(text, std::ios::binary);
  if (!in.is_open()) return Fail("cannot read " + text);
  const Utf8ToGbk utf8;
  FieldDictList::Converter convert;
  if (encoding == "utf8") {
    if (!utf8.ok()) return Fail("the system cannot convert UTF-8 to GBK");
    convert = [&utf8](const std::string& line, std::string* gbk) {
      return utf8.Convert(line, gbk);
    };
  }
  FieldDictList list(tags);
  std::string error;
  if (!list.Read(in, text, &error, convert) || !list.Write(out, &error)) return Fail(error);
  printf("%zu words, %zu repeated lines left out\n", list.size(), list.repeated());
  return 0;
}

}  // namespace

ZIVOR_DATA_COMMAND(kFieldDict);
