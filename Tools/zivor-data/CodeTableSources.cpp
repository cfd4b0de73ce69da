#include "CodeTableSources.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

// The lines of a source file with their numbers, CR and comments removed;
// calls parse(line) for each and stops at the first false, reporting it.
template <class Parse>
bool ForEachLine(const std::string& path, std::string* error, Parse parse) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = "cannot read " + path;
    return false;
  }
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    if (!parse(line)) {
      *error = path + ":" + std::to_string(number) + ": malformed line";
      return false;
    }
  }
  return true;
}

// A hex number of 1 to 8 digits, the whole token.
bool ParseHex(const std::string& token, unsigned long* value) {
  const auto isHex = [](char c) { return isxdigit(static_cast<unsigned char>(c)) != 0; };
  if (token.empty() || token.size() > 8 || !std::all_of(token.begin(), token.end(), isHex)) {
    return false;
  }
  *value = strtoul(token.c_str(), nullptr, 16);
  return true;
}

// The byte length of a UTF-8 sequence by its first byte; 0 for a byte that
// cannot start one.
size_t SequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC0) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  return lead < 0xF8 ? 4 : 0;
}

bool IsScalarValue(char32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

// The blank-separated words of text.
std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  std::istringstream in(text);
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

}  // namespace

std::string EncodeUtf8(const Text& text) {
  std::string out;
  for (const char32_t c : text) {
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

std::optional<Text> DecodeUtf8(const std::string& bytes) {
  Text text;
  for (size_t i = 0; i < bytes.size();) {
    const unsigned char lead = static_cast<unsigned char>(bytes[i]);
    const size_t length = SequenceLength(lead);
    if (length == 0 || i + length > bytes.size()) return std::nullopt;
    char32_t c = length == 1 ? lead : lead & (0x7F >> length);
    for (size_t k = 1; k < length; ++k) {
      const unsigned char next = static_cast<unsigned char>(bytes[i + k]);
      if ((next & 0xC0) != 0x80) return std::nullopt;
      c = (c << 6) | (next & 0x3F);
    }
    // Overlong forms and surrogates are not UTF-8.
    static const char32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (c < kLowest[length] || !IsScalarValue(c)) return std::nullopt;
    text += c;
    i += length;
  }
  return text;
}

bool CodePage::Load(const std::string& path, std::string* error) {
  bytes_.clear();
  decoded_.clear();
  return ForEachLine(path, error, [this](const std::string& line) {
    const std::vector<std::string> words = Words(line);
    unsigned long code = 0, point = 0;
    if (words.size() < 2 || words.size() > 3 || !ParseHex(words[0], &code) ||
        !ParseHex(words[1], &point) || code < 0x8140 || code > 0xFEFE || point < 0x80 ||
        !IsScalarValue(point) || decoded_.count(static_cast<int>(code)) != 0) {
      return false;
    }
    const bool decodeOnly = words.size() == 3;
    if (decodeOnly ? words[2] != "decode-only" : bytes_.count(point) != 0) return false;
    decoded_[static_cast<int>(code)] = point;
    if (!decodeOnly) {
      bytes_[point] = {static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
    }
    return true;
  });
}

bool CodePage::HasAll(const Text& text) const {
  return std::all_of(text.begin(), text.end(), [this](char32_t c) { return Has(c); });
}

std::optional<std::string> CodePage::Encode(const Text& text) const {
  std::string out;
  for (const char32_t c : text) {
    const auto found = bytes_.find(c);
    if (found == bytes_.end()) return std::nullopt;
    out += found->second;
  }
  return out;
}

int CodePage::Code(char32_t c) const {
  const auto found = bytes_.find(c);
  if (found == bytes_.end()) return 0;
  return static_cast<unsigned char>(found->second[0]) * 256 +
         static_cast<unsigned char>(found->second[1]);
}

bool ConversionTable::Load(const std::string& path, std::string* error) {
  pairs_.clear();
  index_.clear();
  return ForEachLine(path, error, [this](const std::string& line) {
    const size_t tab = line.find('\t');
    if (tab == std::string::npos) return false;
    const std::vector<std::string> candidates = Words(line.substr(tab + 1));
    const std::optional<Text> key = DecodeUtf8(line.substr(0, tab));
    const std::optional<Text> first = candidates.empty() ? std::nullopt : DecodeUtf8(candidates[0]);
    if (!key || !first || key->empty() || first->empty()) return false;
    if (index_.emplace(*key, pairs_.size()).second) pairs_.emplace_back(*key, *first);
    return true;
  });
}

const Text* ConversionTable::Find(const Text& key) const {
  const auto found = index_.find(key);
  return found == index_.end() ? nullptr : &pairs_[found->second].second;
}

char32_t ConversionTable::Char(char32_t c) const {
  const Text* candidate = Find(Text(1, c));
  return candidate != nullptr && candidate->size() == 1 ? (*candidate)[0] : c;
}

bool CodeTableSources::Load(const std::string& dir, std::string* error) {
  const auto table = [&dir](const char* name) { return dir + "/" + name + ".txt"; };
  return gbk.Load(table("gbk-unicode"), error) && big5.Load(table("big5-unicode"), error) &&
         tsCharacters.Load(table("TSCharacters"), error) &&
         tsPhrases.Load(table("TSPhrases"), error) &&
         stCharacters.Load(table("STCharacters"), error) &&
         stPhrases.Load(table("STPhrases"), error) && twVariants.Load(table("TWVariants"), error) &&
         twVariantsRev.Load(table("TWVariantsRev"), error) &&
         twVariantsRevPhrases.Load(table("TWVariantsRevPhrases"), error);
}
