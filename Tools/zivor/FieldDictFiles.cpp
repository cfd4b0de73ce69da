#include "FieldDictFiles.h"

#include <fstream>
#include <memory>
#include <sstream>

#include "FieldDictList.h"
#include "GbkDictCopy.h"
#include "Utility/POSmap.h"
#include "Utility/global_linux.h"

namespace {

// The primary tag map: the file Configure.xml names as "TagSet".
bool LoadTagSet(const std::string& data_dir, CPOSmap* tags, std::string* error) {
  const std::string configure = data_dir + "/Configure.xml";
  char* text = nullptr;
  const int size = ReadFile(configure.c_str(), &text);
  std::unique_ptr<char[]> owner(text);
  char name[kXMLValueSize];
  if (size <= 0 || !GetXMLItemValue(text, "TagSet", name, sizeof name)) {
    *error = "no TagSet in " + configure;
    return false;
  }
  const std::string path = data_dir + "/" + name;
  if (std::string(name).find('/') != std::string::npos || !tags->Load(path.c_str())) {
    *error = "cannot read the tag set " + path;
    return false;
  }
  return true;
}

}  // namespace

bool BuildFieldDict(const std::string& list, const Encoding& encoding,
                    const std::string& data_dir, const std::string& stem, std::string* error) {
  CPOSmap tags;
  if (!LoadTagSet(data_dir, &tags, error)) return false;
  FieldDictList words(tags);
  if (!list.empty()) {
    GbkDictCopy gbk;
    if (!gbk.Make(list, encoding, data_dir, error)) return false;
    std::ifstream in(gbk.path(), std::ios::binary);
    if (!words.Read(in, list, error)) return false;
  }
  return words.Write(stem, error);
}
