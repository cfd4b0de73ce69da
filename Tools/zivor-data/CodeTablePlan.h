// CodeTablePlan.h: what the code-translation tables hold, worked out in
// Unicode before any table is written.
//
// Five dictionaries (lexicons) of strings: GBKA and UTF8 for UTF-8, GBK
// (shared by BIG5 and GBKC), BIG5 and GBKC. Six mappings translate the
// strings of one lexicon into strings of another: UTF8 <-> GBKA, BIG5 <-> GBK
// and GBKC <-> GBK. Each mapping follows a Conversion: a character map and
// phrase pairs.
//
// A lexicon holds the characters its mappings translate, the character
// targets of the mappings into it, and the phrases whose translation differs
// from translating their characters one by one (with those phrases'
// targets). Since a translator cuts text by longest match, every string of a
// lexicon must translate as a whole: its phrase pair, else its characters
// one by one. When that translation is not in the target lexicon it is added
// there, and an added string that cannot be translated back in turn maps to
// the string it came from. So a string longer than one character has a
// target in every mapping out of its lexicon unless one of its characters
// has none; characters without a counterpart stay unmapped.
#ifndef ZIVOR_TOOLS_CODE_TABLE_PLAN_H_
#define ZIVOR_TOOLS_CODE_TABLE_PLAN_H_

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "CodeTableSources.h"

// One direction of translation.
class Conversion {
 public:
  void AddChar(char32_t from, char32_t to) { chars_.emplace(from, to); }
  // Adds the pair unless `from` already has one, provided both have the same
  // number of characters (at least two), `from` is written in fromPage and
  // `to` in toPage. Returns whether it was added.
  bool AddPhrase(const Text& from, const Text& to, const CodePage& fromPage,
                 const CodePage& toPage);

  // The characters translated one by one; nullopt when one has no mapping.
  std::optional<Text> CharByChar(const Text& text) const;
  // The phrase target of text, else its characters one by one.
  std::optional<Text> Translate(const Text& text) const;

  const std::map<char32_t, char32_t>& Chars() const { return chars_; }
  // The phrase pairs whose target differs from the characters translated
  // one by one: the pairs a table needs.
  std::vector<std::pair<Text, Text>> DistinctPhrases() const;

 private:
  std::map<char32_t, char32_t> chars_;
  std::map<Text, Text> phrases_;
};

// The strings of one dictionary and how they are written.
struct Lexicon {
  std::string name;        // file stem: name.pdat, name.wordlist
  const CodePage* page;    // the byte encoding; null for UTF-8
  std::set<Text> strings;  // the strings, in Unicode

  // The bytes of text in the lexicon's encoding (every string encodes).
  std::string Bytes(const Text& text) const;
};

// One translation table: every string of `from` with its target in `to`.
struct Mapping {
  std::string file;  // the map's file name
  Lexicon* from;
  Lexicon* to;
  Conversion conversion;
  const Mapping* reverse = nullptr;  // the mapping from `to` back to `from`
  std::map<Text, Text> targets;      // by source string
  std::map<Text, Text> added;        // strings put into `to`, with their source
};

// The two mappings of one caller encoding.
struct EncodingTables {
  std::string name;       // "UTF-8", "BIG5", "GBKC"
  const CodePage* chars;  // the characters the encoding has in the sources
  const Mapping* toGbk;
  const Mapping* fromGbk;
};

class CodeTablePlan {
 public:
  // The translations (`taiwan` below says where the Taiwan variant tables
  // take part): UTF-8 maps every GBK character to itself; BIG5 and GBKC
  // turn traditional characters and phrases into simplified ones (both
  // reading Taiwan forms); GBK turns into BIG5 with Taiwan forms where BIG5
  // lacks the common ones, and into GBKC with the common traditional forms.
  explicit CodeTablePlan(const CodeTableSources& sources);
  CodeTablePlan(const CodeTablePlan&) = delete;
  CodeTablePlan& operator=(const CodeTablePlan&) = delete;

  const std::vector<std::unique_ptr<Lexicon>>& Lexicons() const { return lexicons_; }
  const std::vector<std::unique_ptr<Mapping>>& Mappings() const { return mappings_; }
  const std::vector<EncodingTables>& Encodings() const { return encodings_; }

 private:
  using Queue = std::vector<std::pair<const Lexicon*, Text>>;

  Lexicon* AddLexicon(const std::string& name, const CodePage* page);
  // Adds the encoding's mappings, `in` from ext to gbk (file inFile) and
  // `out` back (outFile); seeds both lexicons with their strings.
  void AddEncoding(EncodingTables encoding, Lexicon* ext, Lexicon* gbk, const std::string& inFile,
                   const std::string& outFile, Conversion in, Conversion out);
  Mapping* AddMapping(const std::string& file, Lexicon* from, Lexicon* to, Conversion conversion);
  // Gives every string a target, growing the lexicons as needed.
  void Close();
  // Translates x by m, queueing the string it adds to m.to, if any.
  void Translate(Mapping* m, const Text& x, Queue* queue);

  std::vector<std::unique_ptr<Lexicon>> lexicons_;
  std::vector<std::unique_ptr<Mapping>> mappings_;
  std::vector<EncodingTables> encodings_;
};

#endif  // ZIVOR_TOOLS_CODE_TABLE_PLAN_H_
