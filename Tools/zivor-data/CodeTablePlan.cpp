#include "CodeTablePlan.h"

#include <utility>

namespace {

// GB2312's block of Chinese characters in GBK (lead 0xB0-0xF7, trail
// 0xA1-0xFE): the characters simplified text such as the training corpus
// is written in.
bool IsGb2312Hanzi(const CodePage& gbk, char32_t c) {
  const int lead = gbk.Code(c) >> 8;
  const int trail = gbk.Code(c) & 0xFF;
  return lead >= 0xB0 && lead <= 0xF7 && trail >= 0xA1 && trail <= 0xFE;
}

// The simplified form of c read as a Taiwan form: brought to the common
// traditional form first (著 to 着, 裡 to 裏), then simplified. None when c
// has no Taiwan reading; when c is the simplified form of another character
// itself (么, for 麼, stays 么); or when the result leaves the GB2312 block
// while the plain simplification stays in it (抬 would become 擡).
std::optional<char32_t> TaiwanSimplified(const CodeTableSources& src, char32_t c, char32_t plain) {
  const char32_t common = src.twVariantsRev.Char(c);
  if (common == c || src.stCharacters.Char(c) != c) return std::nullopt;
  const char32_t simplified = src.tsCharacters.Char(common);
  if (!src.gbk.Has(simplified) ||
      (!IsGb2312Hanzi(src.gbk, simplified) && IsGb2312Hanzi(src.gbk, plain))) {
    return std::nullopt;
  }
  return simplified;
}

// A common traditional phrase simplified: its phrase pair, else the first
// candidate of each character.
Text SimplifiedPhrase(const CodeTableSources& src, const Text& phrase) {
  if (const Text* simplified = src.tsPhrases.Find(phrase)) return *simplified;
  Text out;
  for (const char32_t c : phrase) out += src.tsCharacters.Char(c);
  return out;
}

// Traditional text written in `from` to GBK's simplified forms. A character
// becomes its first simplified candidate when GBK has it, else itself when
// GBK has it. With `taiwan`, Taiwan forms are read too (TaiwanSimplified)
// and the phrases that keep a Taiwan form (著作) are added.
Conversion ToSimplified(const CodeTableSources& src, const CodePage& from, bool taiwan) {
  Conversion conversion;
  for (const auto& entry : from.Encoded()) {
    const char32_t c = entry.first;
    const char32_t plain = src.tsCharacters.Char(c);
    const char32_t simplified = taiwan ? TaiwanSimplified(src, c, plain).value_or(plain) : plain;
    if (src.gbk.Has(simplified)) {
      conversion.AddChar(c, simplified);
    } else if (src.gbk.Has(c)) {
      conversion.AddChar(c, c);
    }
  }
  for (const auto& [phrase, simplified] : src.tsPhrases.Pairs()) {
    conversion.AddPhrase(phrase, simplified, from, src.gbk);
  }
  if (taiwan) {
    for (const auto& [phrase, common] : src.twVariantsRevPhrases.Pairs()) {
      conversion.AddPhrase(phrase, SimplifiedPhrase(src, common), from, src.gbk);
    }
  }
  return conversion;
}

// The Taiwan form of a traditional character when `to` has it, else c.
char32_t TaiwanForm(const CodeTableSources& src, char32_t c, const CodePage& to) {
  const char32_t taiwan = src.twVariants.Char(c);
  return to.Has(taiwan) ? taiwan : c;
}

// GBK to the traditional forms written in `to`: the first traditional
// candidate when `to` has it (with `taiwan`, its Taiwan form where `to` has
// that), else the character itself when `to` has it.
Conversion ToTraditional(const CodeTableSources& src, const CodePage& to, bool taiwan) {
  Conversion conversion;
  for (const auto& entry : src.gbk.Encoded()) {
    const char32_t c = entry.first;
    const char32_t plain = src.stCharacters.Char(c);
    const char32_t traditional = taiwan ? TaiwanForm(src, plain, to) : plain;
    if (to.Has(traditional)) {
      conversion.AddChar(c, traditional);
    } else if (to.Has(c)) {
      conversion.AddChar(c, c);
    }
  }
  for (const auto& [phrase, traditional] : src.stPhrases.Pairs()) {
    Text target = traditional;
    if (taiwan) {
      for (char32_t& c : target) c = TaiwanForm(src, c, to);
    }
    conversion.AddPhrase(phrase, target, src.gbk, to);
  }
  return conversion;
}

// Every character of the code page to itself.
Conversion Identity(const CodePage& page) {
  Conversion conversion;
  for (const auto& entry : page.Encoded()) conversion.AddChar(entry.first, entry.first);
  return conversion;
}

}  // namespace

bool Conversion::AddPhrase(const Text& from, const Text& to, const CodePage& fromPage,
                           const CodePage& toPage) {
  if (from.size() < 2 || from.size() != to.size() || !fromPage.HasAll(from) || !toPage.HasAll(to)) {
    return false;
  }
  return phrases_.emplace(from, to).second;
}

std::optional<Text> Conversion::CharByChar(const Text& text) const {
  Text out;
  for (const char32_t c : text) {
    const auto found = chars_.find(c);
    if (found == chars_.end()) return std::nullopt;
    out += found->second;
  }
  return out;
}

std::optional<Text> Conversion::Translate(const Text& text) const {
  const auto phrase = phrases_.find(text);
  return phrase != phrases_.end() ? phrase->second : CharByChar(text);
}

std::vector<std::pair<Text, Text>> Conversion::DistinctPhrases() const {
  std::vector<std::pair<Text, Text>> distinct;
  for (const auto& [from, to] : phrases_) {
    if (CharByChar(from) != to) distinct.emplace_back(from, to);
  }
  return distinct;
}

std::string Lexicon::Bytes(const Text& text) const {
  if (page == nullptr) return EncodeUtf8(text);
  return page->Encode(text).value_or(std::string());
}

CodeTablePlan::CodeTablePlan(const CodeTableSources& src) {
  Lexicon* gbka = AddLexicon("GBKA", &src.gbk);
  Lexicon* utf8 = AddLexicon("UTF8", nullptr);
  Lexicon* gbk = AddLexicon("GBK", &src.gbk);
  Lexicon* big5 = AddLexicon("BIG5", &src.big5);
  Lexicon* gbkc = AddLexicon("GBKC", &src.gbk);
  // GBK's dictionaries know every GBK character, whether it translates or
  // not, so that a longest match never stops inside one.
  for (Lexicon* lexicon : {gbka, gbk, gbkc}) {
    for (const auto& entry : src.gbk.Encoded()) lexicon->strings.insert(Text(1, entry.first));
  }
  AddEncoding({"UTF-8", &src.gbk, nullptr, nullptr}, utf8, gbka, "UTF2GBKA.map", "GBKA2UTF.map",
              Identity(src.gbk), Identity(src.gbk));
  AddEncoding({"BIG5", &src.big5, nullptr, nullptr}, big5, gbk, "BIG2GBK.map", "GBK2BIG.map",
              ToSimplified(src, src.big5, true), ToTraditional(src, src.big5, true));
  AddEncoding({"GBKC", &src.gbk, nullptr, nullptr}, gbkc, gbk, "GBKC2GBK.map", "GBK2GBKC.map",
              ToSimplified(src, src.gbk, true), ToTraditional(src, src.gbk, false));
  Close();
}

Lexicon* CodeTablePlan::AddLexicon(const std::string& name, const CodePage* page) {
  lexicons_.push_back(std::make_unique<Lexicon>(Lexicon{name, page, {}}));
  return lexicons_.back().get();
}

void CodeTablePlan::AddEncoding(EncodingTables encoding, Lexicon* ext, Lexicon* gbk,
                                const std::string& inFile, const std::string& outFile,
                                Conversion in, Conversion out) {
  Mapping* toGbk = AddMapping(inFile, ext, gbk, std::move(in));
  Mapping* fromGbk = AddMapping(outFile, gbk, ext, std::move(out));
  toGbk->reverse = fromGbk;
  fromGbk->reverse = toGbk;
  encoding.toGbk = toGbk;
  encoding.fromGbk = fromGbk;
  encodings_.push_back(std::move(encoding));
}

Mapping* CodeTablePlan::AddMapping(const std::string& file, Lexicon* from, Lexicon* to,
                                   Conversion conversion) {
  for (const auto& [source, target] : conversion.Chars()) {
    from->strings.insert(Text(1, source));
    to->strings.insert(Text(1, target));
  }
  for (const auto& [source, target] : conversion.DistinctPhrases()) {
    from->strings.insert(source);
    to->strings.insert(target);
  }
  mappings_.push_back(
      std::make_unique<Mapping>(Mapping{file, from, to, std::move(conversion), nullptr, {}, {}}));
  return mappings_.back().get();
}

void CodeTablePlan::Close() {
  Queue queue;
  for (const auto& lexicon : lexicons_) {
    for (const Text& text : lexicon->strings) queue.emplace_back(lexicon.get(), text);
  }
  // Translating may add strings, which are translated in their turn; the
  // queue grows, so each entry is copied before use.
  for (size_t i = 0; i < queue.size(); ++i) {
    const Lexicon* lexicon = queue[i].first;
    const Text text = queue[i].second;
    for (const auto& mapping : mappings_) {
      if (mapping->from == lexicon) Translate(mapping.get(), text, &queue);
    }
  }
}

void CodeTablePlan::Translate(Mapping* m, const Text& x, Queue* queue) {
  std::optional<Text> y = m->conversion.Translate(x);
  const bool present = y && m->to->strings.count(*y) != 0;
  const auto origin = m->reverse->added.find(x);
  if (!present && origin != m->reverse->added.end()) {
    // x was added as a translation; it goes back to where it came from.
    y = origin->second;
  } else if (!present && y && y->size() > 1) {
    m->to->strings.insert(*y);
    m->added.emplace(*y, x);
    queue->emplace_back(m->to, *y);
  } else if (!present) {
    return;
  }
  m->targets.emplace(x, *y);
}
