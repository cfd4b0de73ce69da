#include "TerminalText.h"

#include <iconv.h>
#include <langinfo.h>
#include <strings.h>

#include <vector>

namespace {

// The terminal's character set, as iconv names it.
std::string TerminalCharset() {
  const char* codeset = nl_langinfo(CODESET);
  if (codeset == nullptr || codeset[0] == '\0' || strcasecmp(codeset, "ANSI_X3.4-1968") == 0) {
    return "UTF-8";
  }
  return codeset;
}

// The iconv name of the run's encoding (GBKC is GBK bytes).
const char* IconvName(const Encoding& encoding) {
  switch (encoding.layout) {
    case TextLayout::kUtf8: return "UTF-8";
    case TextLayout::kBig5: return "BIG5";
    case TextLayout::kGbk: break;
  }
  return "GBK";
}

}  // namespace

std::string ForTerminal(const std::string& text, const Encoding& encoding) {
  const std::string to = TerminalCharset();
  if (strcasecmp(to.c_str(), IconvName(encoding)) == 0) return text;
  const iconv_t cd = iconv_open(to.c_str(), IconvName(encoding));
  if (cd == reinterpret_cast<iconv_t>(-1)) return text;
  std::vector<char> out(text.size() * 4 + 4);
  char* in_ptr = const_cast<char*>(text.data());
  size_t in_left = text.size();
  char* out_ptr = out.data();
  size_t out_left = out.size();
  const size_t converted = iconv(cd, &in_ptr, &in_left, &out_ptr, &out_left);
  iconv_close(cd);
  if (converted == static_cast<size_t>(-1)) return text;
  return std::string(out.data(), out.size() - out_left);
}
