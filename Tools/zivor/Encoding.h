// Encoding.h: the text encodings of the command-line tools: their names on
// the command line, the codes ZIVOR_Init takes, their byte layouts, and
// whether a text looks like it is in one of them.
//
// Header-only, so that zivor and zivor-eval share it.
#ifndef ZIVOR_TOOLS_ZIVOR_ENCODING_H_
#define ZIVOR_TOOLS_ZIVOR_ENCODING_H_

#include <strings.h>

#include <cstddef>
#include <string>

#include "Utility/CharScan.h"

struct Encoding {
  const char* name;   // as -e takes it
  const char* label;  // as messages write it
  int code;           // the `encode` argument of ZIVOR_Init
  TextLayout layout;
};

// In the order a text that does not fit its encoding is tried against the
// others: UTF-8 first, since GBK and BIG5 text is hardly ever well-formed
// UTF-8, then GBK, of whose byte layout BIG5's is a part. GBKC (GBK bytes
// written with traditional characters) cannot be told from GBK by its bytes.
inline constexpr Encoding kEncodings[] = {
    {"utf8", "UTF-8", 1, TextLayout::kUtf8},
    {"gbk", "GBK", 0, TextLayout::kGbk},
    {"big5", "BIG5", 2, TextLayout::kBig5},
    {"gbkc", "GBKC", 3, TextLayout::kGbk},
};
inline constexpr const Encoding& kUtf8Encoding = kEncodings[0];
inline constexpr const Encoding& kGbkEncoding = kEncodings[1];
inline constexpr char kEncodingNames[] = "utf8, gbk, big5 or gbkc";

// The encoding called `name` in any case ("utf-8" is utf8), or null.
inline const Encoding* FindEncoding(const std::string& name) {
  const char* wanted = strcasecmp(name.c_str(), "utf-8") == 0 ? "utf8" : name.c_str();
  for (const Encoding& encoding : kEncodings) {
    if (strcasecmp(wanted, encoding.name) == 0) return &encoding;
  }
  return nullptr;
}

// Whether the bytes are well-formed UTF-8 holding a character of three bytes
// or more, as Chinese text in UTF-8 does.
inline bool LooksLikeUtf8(const char* s, size_t len) {
  bool wide = false;
  for (size_t pos = 0; pos < len;) {
    const ScannedChar c = ScanChar(TextLayout::kUtf8, s + pos, len - pos);
    if (c.kind == ScannedChar::kMalformed) return false;
    wide = wide || c.len >= 3;
    pos += static_cast<size_t>(c.len);
  }
  return wide;
}

// Whether the bytes can be text in `encoding`: well-formed in its layout
// and, for the double-byte encodings, not UTF-8 by the look of it (most
// UTF-8 Chinese is well-formed GBK too).
inline bool Fits(const Encoding& encoding, const char* s, size_t len) {
  if (!IsWellFormed(encoding.layout, s, len)) return false;
  return encoding.layout == TextLayout::kUtf8 || !LooksLikeUtf8(s, len);
}

// "" when the bytes fit `encoding`; else what is wrong with `subject` (the
// input, a file), naming the first other encoding they fit:
// "input is not valid UTF-8; try -e gbk".
inline std::string Mismatch(const Encoding& encoding, const char* s, size_t len,
                            const std::string& subject) {
  if (Fits(encoding, s, len)) return std::string();
  std::string message = subject + (IsWellFormed(encoding.layout, s, len)
                                       ? " looks like UTF-8, not "
                                       : " is not valid ") +
                        encoding.label;
  for (const Encoding& other : kEncodings) {
    if (other.layout != encoding.layout && Fits(other, s, len)) {
      return message + "; try -e " + other.name;
    }
  }
  return message;
}

#endif  // ZIVOR_TOOLS_ZIVOR_ENCODING_H_
