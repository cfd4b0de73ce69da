// CodeTableSources.h: the text sources of the code-translation tables.
//
// Two kinds of file, both read into Unicode code points so that the
// conversions can be worked out independently of any byte encoding:
//
// - a code page ("gbk-unicode.txt", "big5-unicode.txt"): one double-byte code
//   per line, "CODE CODEPOINT" in hex, with a third word "decode-only" when
//   the code decodes to a code point that is written with another code (BIG5
//   has a few duplicate codes);
// - a conversion table (the OpenCC tables): "KEY<TAB>CANDIDATE CANDIDATE...",
//   UTF-8, one key per line; only the first candidate is used.
//
// Lines starting with '#' and blank lines are skipped. Any malformed line
// makes Load fail with the file name and line number in the message.
#ifndef ZIVOR_TOOLS_CODE_TABLE_SOURCES_H_
#define ZIVOR_TOOLS_CODE_TABLE_SOURCES_H_

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// A string of Unicode code points.
using Text = std::u32string;

// The UTF-8 bytes of text (code points must be valid scalar values).
std::string EncodeUtf8(const Text& text);
// The code points of UTF-8 bytes; nullopt when the bytes are not well-formed.
std::optional<Text> DecodeUtf8(const std::string& bytes);

// A double-byte character set as glibc's iconv decodes it.
class CodePage {
 public:
  bool Load(const std::string& path, std::string* error);

  bool Has(char32_t c) const { return bytes_.count(c) != 0; }
  // Whether every character of text is in the code page.
  bool HasAll(const Text& text) const;
  // The bytes of text; nullopt when a character is missing.
  std::optional<std::string> Encode(const Text& text) const;
  // The two-byte code of c, 0 when missing.
  int Code(char32_t c) const;
  // Every code point with the bytes iconv writes for it.
  const std::map<char32_t, std::string>& Encoded() const { return bytes_; }
  // Every code with its code point, by code (decode-only codes included).
  const std::map<int, char32_t>& Decoded() const { return decoded_; }

 private:
  std::map<char32_t, std::string> bytes_;  // the code iconv writes for each code point
  std::map<int, char32_t> decoded_;
};

// One OpenCC conversion table: each key with its first candidate.
class ConversionTable {
 public:
  bool Load(const std::string& path, std::string* error);

  // The first candidate of key, or null.
  const Text* Find(const Text& key) const;
  // The first candidate of the character c when it is a single character,
  // else c itself.
  char32_t Char(char32_t c) const;
  // The pairs in file order (a key listed twice keeps its first line).
  const std::vector<std::pair<Text, Text>>& Pairs() const { return pairs_; }

 private:
  std::vector<std::pair<Text, Text>> pairs_;
  std::map<Text, size_t> index_;
};

// Every source file, read from one directory.
struct CodeTableSources {
  CodePage gbk;                             // gbk-unicode.txt
  CodePage big5;                            // big5-unicode.txt
  ConversionTable tsCharacters, tsPhrases;  // traditional to simplified
  ConversionTable stCharacters, stPhrases;  // simplified to traditional
  ConversionTable twVariants;               // common traditional to Taiwan forms
  ConversionTable twVariantsRev;            // Taiwan forms to common traditional
  ConversionTable twVariantsRevPhrases;     // phrases that keep their Taiwan form

  bool Load(const std::string& dir, std::string* error);
};

#endif  // ZIVOR_TOOLS_CODE_TABLE_SOURCES_H_
