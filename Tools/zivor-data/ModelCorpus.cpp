// ModelCorpus.cpp: reads corpus paragraphs into the analyser's token stream.
#include "ModelCorpus.h"

#include <algorithm>

#include "Utility/Global.h"
#include "Utility/PDAT.h"

namespace {

constexpr int kCharBytes = 2;  // a Chinese character in GBK

bool IsNameToken(const CorpusToken& token) { return token.tag == "nr"; }

// A name piece that can be a surname or a given name: one or two characters.
bool IsShortName(const CorpusToken& token) {
  return IsNameToken(token) && token.word.size() <= 2 * kCharBytes;
}

NameKind KindOfSingleName(const std::string& text) {
  if (text.size() <= kCharBytes) return NameKind::kSurname;
  if (text.size() == 2 * kCharBytes) {
    if (IsNamePrefix(text.substr(0, kCharBytes))) return NameKind::kPrefixed;
    if (IsNameSuffix(text.substr(kCharBytes))) return NameKind::kSuffixed;
  }
  return NameKind::kOther;
}

bool InList(const char* const* list, const std::string& word) {
  for (; *list != nullptr; ++list) {
    if (word == *list) return true;
  }
  return false;
}

}  // namespace

std::string FoldAscii(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool IsNamePrefix(const std::string& word) {
  static const char* const kPrefixes[] = {"\xc0\xcf", "\xd0\xa1", "\xb0\xa2", nullptr};
  return InList(kPrefixes, word);
}

bool IsNameSuffix(const std::string& word) {
  static const char* const kSuffixes[] = {"\xc0\xcf", "\xd7\xdc", "\xc4\xb3", nullptr};
  return InList(kSuffixes, word);
}

const std::vector<FixedWord>& FixedWords() {
  static const std::vector<FixedWord> words = {
      {&gSent_StartID, "\xca\xbc##\xca\xbc", "begin"},  // 始##始
      {&gSent_EndID, "\xc4\xa9##\xc4\xa9", "end"},      // 末##末
      {&gUnknown_x_ID, "\xce\xb4##\xb4\xae", "x"},      // 未##串
      {&gUnknown_nr_ID, "\xce\xb4##\xc8\xcb", "nr"},    // 未##人
      {&gUnknown_ns_ID, "\xce\xb4##\xb5\xd8", "ns"},    // 未##地
      {&gUnknown_nt_ID, "\xce\xb4##\xcd\xc5", "nt"},    // 未##团
      {&gUnknown_t_ID, "\xce\xb4##\xca\xb1", "t"},      // 未##时
      {&gUnknown_m_ID, "\xce\xb4##\xca\xfd", "m"},      // 未##数
      {&gUnknown_nz_ID, "\xce\xb4##\xd7\xa8", "nz"},    // 未##专
      {&gQuatation_LD_ID, "\xa1\xb0", nullptr},         // “
      {&gQuatation_RD_ID, "\xa1\xb1", nullptr},         // ”
      {&gQuatation_LS_ID, "\xa1\xae", nullptr},         // ‘
      {&gQuatation_RS_ID, "\xa1\xaf", nullptr},         // ’
      {&gPunctation_WP_ID, "\xa1\xaa\xa1\xaa\xa1\xaa", nullptr},  // ———
      {&gOneID, "\xd2\xbb", nullptr},                   // 一
  };
  return words;
}

const char* FixedWordText(const int* handle) {
  for (const FixedWord& fixed : FixedWords()) {
    if (fixed.handle == handle) return fixed.word;
  }
  return "";
}

void ResolveFixedWords(const CPDAT& dict) {
  for (const FixedWord& fixed : FixedWords()) *fixed.handle = dict.Find(fixed.word);
}

int SplitDroppedWords(const std::set<std::string>& dropped, std::vector<ModelSentence>* sentences) {
  if (dropped.empty()) return 0;
  std::set<std::string> vocabulary;
  size_t longest = 0;
  for (const ModelSentence& sentence : *sentences) {
    for (const ModelToken& token : sentence.tokens) {
      if (dropped.count(token.word) != 0) continue;
      vocabulary.insert(token.word);
      longest = std::max(longest, token.word.size());
    }
  }
  int split = 0;
  for (ModelSentence& sentence : *sentences) {
    std::vector<ModelToken> tokens;
    for (ModelToken& token : sentence.tokens) {
      if (dropped.count(token.word) == 0) {
        tokens.push_back(std::move(token));
        continue;
      }
      ++split;
      // Character boundaries of the word: GBK, one byte below 0x80.
      const std::string& word = token.word;
      std::vector<size_t> bounds = {0};
      while (bounds.back() < word.size()) {
        const size_t bytes = static_cast<unsigned char>(word[bounds.back()]) >= 0x80 ? 2 : 1;
        bounds.push_back(std::min(bounds.back() + bytes, word.size()));
      }
      for (size_t first = 0; first + 1 < bounds.size();) {
        size_t last = first + 1;  // a single character when no word fits
        for (size_t end = bounds.size() - 1; end > first + 1; --end) {
          const size_t size = bounds[end] - bounds[first];
          if (size < word.size() && size <= longest &&
              vocabulary.count(word.substr(bounds[first], size)) != 0) {
            last = end;
            break;
          }
        }
        ModelToken piece;
        piece.text = token.text.substr(bounds[first], bounds[last] - bounds[first]);
        piece.word = word.substr(bounds[first], bounds[last] - bounds[first]);
        piece.tag = token.tag;
        tokens.push_back(std::move(piece));
        first = last;
      }
    }
    sentence.tokens = std::move(tokens);
  }
  return split;
}

ModelCorpusReader::ModelCorpusReader(const TagRefiner& tags, CCharset* charset, CPDAT* dict)
    : tags_(tags), atoms_(charset, dict, nullptr), name_tag_(tags.Id("nr")) {}

void ModelCorpusReader::Add(const CorpusParagraph& paragraph,
                            std::vector<ModelSentence>* sentences) {
  std::vector<ModelToken> tokens = Tokens(paragraph);
  std::string text;
  for (const ModelToken& token : tokens) text += token.text;
  // A sentence closes after the token that reaches the end of an atom
  // segmentation call; a token that an end falls inside stays whole.
  const std::vector<int> ends = SentenceEnds(text);
  size_t next_end = 0;
  int offset = 0;
  ModelSentence sentence;
  for (ModelToken& token : tokens) {
    offset += static_cast<int>(token.text.size());
    sentence.text += token.text;
    sentence.tokens.push_back(std::move(token));
    if (next_end < ends.size() && offset >= ends[next_end]) {
      while (next_end < ends.size() && ends[next_end] <= offset) ++next_end;
      sentences->push_back(std::move(sentence));
      sentence = ModelSentence();
    }
  }
  if (!sentence.tokens.empty()) sentences->push_back(std::move(sentence));
}

// Person names: the corpus writes a Chinese name as a surname token and a
// given-name token, both `nr`; two adjacent `nr` tokens of one or two
// characters each are merged into one name. Any other `nr` token is a name
// by itself, classified by its length (KindOfSingleName).
std::vector<ModelToken> ModelCorpusReader::Tokens(const CorpusParagraph& paragraph) {
  std::vector<ModelToken> tokens;
  const std::vector<CorpusToken>& in = paragraph.tokens;
  for (size_t i = 0; i < in.size(); ++i) {
    ModelToken token;
    token.text = in[i].word;
    token.tag = tags_.Refine(in[i].word, in[i].tag);
    if (IsShortName(in[i]) && i + 1 < in.size() && IsShortName(in[i + 1])) {
      token.name = NameKind::kFull;
      token.surname_bytes = static_cast<int>(in[i].word.size());
      token.text += in[++i].word;
    } else if (IsNameToken(in[i])) {
      token.name = KindOfSingleName(token.text);
    }
    tokens.push_back(std::move(token));
  }
  for (ModelToken& token : tokens) SetCountedWord(&token);
  return tokens;
}

// The word the tagger sees. Names of two or more characters are 未##人, the
// word the recogniser puts in their place (the segmenter still sees their
// characters: CountSentence); a lone surname stays the
// character it is, tagged n. A token that atom segmentation turns into a single
// number, time or Latin-run atom counts as that atom's pseudo-word: the
// segmenter never looks such a string up except whole (and a Latin run not
// even then), so its own statistics would serve only the strings seen in
// training, while the class statistics serve every number. Single
// characters (一, 两, 十 ...) are dictionary words whose handle the atom
// takes, so they keep their own statistics.
void ModelCorpusReader::SetCountedWord(ModelToken* token) {
  if (token->name != NameKind::kNone && token->name != NameKind::kSurname) {
    token->word = FixedWordText(&gUnknown_nr_ID);
    token->tag = name_tag_;
    return;
  }
  auto cached = class_of_.find(token->text);
  if (cached == class_of_.end()) {
    std::string pseudo;
    atoms_.AtomSegment(token->text.c_str());
    if (atoms_.AtomCount() == 3) {
      const int handle = atoms_.Atoms()[1].handle;
      for (const FixedWord& fixed : FixedWords()) {
        const bool is_class = fixed.handle == &gUnknown_m_ID || fixed.handle == &gUnknown_t_ID ||
                              fixed.handle == &gUnknown_x_ID;
        if (is_class && handle == *fixed.handle) pseudo = fixed.word;
      }
    }
    cached = class_of_.emplace(token->text, pseudo).first;
  }
  if (cached->second.empty()) {
    token->word = FoldAscii(token->text);
    // A lone surname keeps its character but not the name tag: recognition
    // never merges a single word, so the tag would only ever come from the
    // part-of-speech tagger, which then calls the surname of every name it
    // failed to merge a name. On days 25-27 (trained on 1-24) this took
    // names from P 0.849 R 0.791 to P 0.900 R 0.772.
    if (token->name == NameKind::kSurname) token->tag = tags_.Id("n");
    return;
  }
  ++class_tokens_[token->text];
  token->word = cached->second;
  for (const FixedWord& fixed : FixedWords()) {
    if (token->word == fixed.word) token->tag = tags_.Id(fixed.tag);
  }
}

std::vector<int> ModelCorpusReader::SentenceEnds(const std::string& text) {
  std::vector<int> ends;
  const int length = static_cast<int>(text.size());
  int pos = 0;
  while (pos < length) {
    const char* next = atoms_.AtomSegment(text.c_str() + pos);
    const int end = static_cast<int>(next - text.c_str());
    if (end <= pos) break;
    ends.push_back(end);
    pos = end;
  }
  return ends;
}
