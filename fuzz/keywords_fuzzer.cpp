// keywords_fuzzer: keywords, new words and fingerprints of any text.
//
// Input: one byte choosing the encoding (0 to 4, modulo 5), one byte choosing
// the word limit (-1 to 14) of the lists, then the text. Every list must be
// "WORD  " items, no more than the limit allows, each word with "/TAG/WEIGHT"
// (two decimals) when weights are asked for and the same words when not;
// GBK text's words must be its own bytes. The fingerprint must be a 32-bit
// number, the same on a second call, and 0 when the text has no keywords.
// The new-word collection of the text alone must list well-formed items too.
#include <cstddef>
#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "FuzzSupport.h"

namespace {

struct Item {
  std::string word;
  std::string tag;
  std::string weight;
};

bool IsWeight(const std::string& s) {
  static const std::regex kWeight(R"(-?[0-9]+\.[0-9][0-9])");
  return std::regex_match(s, kWeight);
}

// The items of a list; with weights, each split at its last two slashes.
std::vector<Item> Parse(const char* list, bool weighted) {
  fuzz::Require(list != nullptr, "a word list is null");
  const std::string text = list;
  std::vector<Item> items;
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find("  ", at);
    if (end == std::string::npos || end == at) fuzz::Fail("a list item without its two blanks");
    Item item{text.substr(at, end - at), "", ""};
    if (weighted) {
      const size_t slash2 = item.word.rfind('/');
      const size_t slash1 = slash2 == 0 || slash2 == std::string::npos
                                ? std::string::npos
                                : item.word.rfind('/', slash2 - 1);
      if (slash1 == std::string::npos) fuzz::Fail("a weighted item without /TAG/WEIGHT");
      item.weight = item.word.substr(slash2 + 1);
      item.tag = item.word.substr(slash1 + 1, slash2 - slash1 - 1);
      item.word.resize(slash1);
      fuzz::Require(IsWeight(item.weight), "a weight without two decimals");
    }
    fuzz::Require(!item.word.empty(), "an empty word in a list");
    items.push_back(item);
    at = end + 2;
  }
  return items;
}

std::vector<std::string> Words(const std::vector<Item>& items) {
  std::vector<std::string> words;
  for (const Item& item : items) words.push_back(item.word);
  return words;
}

// A ranked list in both forms: the same words, within the limit, and (GBK)
// taken from the text. Returns its words.
using ListCall = const char* (*)(const char*, int, bool);
std::vector<std::string> CheckList(ListCall call, const std::string& text, int limit,
                                   int encoding) {
  const std::vector<std::string> plain = Words(Parse(call(text.c_str(), limit, false), false));
  const std::vector<std::string> weighted = Words(Parse(call(text.c_str(), limit, true), true));
  fuzz::Require(plain == weighted, "the words differ with and without weights");
  if (limit >= 0) {
    fuzz::Require(plain.size() <= static_cast<size_t>(limit) + 1, "more words than the limit");
  }
  if (encoding == fuzz::kGBK) {
    for (const std::string& word : plain) {
      if (text.find(word) == std::string::npos) fuzz::Fail("\"" + word + "\" is not in the text");
    }
  }
  return plain;
}

void CheckFingerPrint(const std::string& text, bool hasKeyWords) {
  const unsigned long finger = ZIVOR_FingerPrint(text.c_str());
  fuzz::Require(finger <= 0xFFFFFFFFul, "a fingerprint beyond 32 bits");
  fuzz::Require(finger == ZIVOR_FingerPrint(text.c_str()), "a second fingerprint differs");
  fuzz::Require(hasKeyWords || finger == 0, "a text without keywords has a fingerprint");
}

void CheckCollection(const std::string& text) {
  fuzz::Require(ZIVOR_NWI_Start() == 1, "the collection does not start");
  ZIVOR_NWI_AddMem(text.c_str());
  ZIVOR_NWI_Complete();
  Parse(ZIVOR_NWI_GetResult(true), true);
  Parse(ZIVOR_NWI_GetResult(false), false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int encoding = input.Byte() % fuzz::kEncodings;
  const int limit = input.Byte() % 16 - 1;
  const std::string text = fuzz::CText(input.Rest());
  fuzz::Library& library = fuzz::Library::Get();
  library.Use(encoding);
  const std::vector<std::string> all = CheckList(&ZIVOR_GetKeyWords, text, -1, encoding);
  CheckList(&ZIVOR_GetKeyWords, text, limit, encoding);
  CheckList(&ZIVOR_GetNewWords, text, limit, encoding);
  CheckFingerPrint(text, !all.empty());
  CheckCollection(text);
  library.TrimNewWordLog();
  return 0;
}
