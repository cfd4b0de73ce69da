// zivor-data model: trains every data file of the analyser from the
// annotated corpus.
//
// Reads the corpus into the token stream the analyser sees (ModelCorpus),
// counts words, word pairs, tags and tag transitions per sentence with the
// sentence markers around it, adds the words of a general word list that
// the corpus lacks (ModelLexicon), builds the core dictionary, unigram and
// bigram tables, then segments the training sentences to count person-name
// roles (ModelRoles) and place-name roles (ModelPlaceRoles): each tenth of
// them with word tables counted on the other nine tenths, so that the roles
// see the pieces of words new to the tables as new text will show them.
// Every binary is written by the analyser's own importers from text written
// to a temporary directory; all counts are kept in ordered maps, so the
// same corpus gives the same bytes.
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Command.h"
#include "ScratchDir.h"
#include "Corpus.h"
#include "ModelCharTagger.h"
#include "ModelCorpus.h"
#include "ModelLexicon.h"
#include "ModelPlaceRoles.h"
#include "ModelRoles.h"
#include "ModelTransliteration.h"
#include "System/PlaceModel.h"
#include "TagRefiner.h"
#include "Utility/Bigram.h"
#include "Utility/Charset.h"
#include "Utility/ContextStat.h"
#include "Utility/FSA.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"
#include "Utility/Unigram.h"

namespace {

namespace fs = std::filesystem;

using TagCounts = std::map<unsigned char, int>;
using Transitions = std::map<std::pair<unsigned char, unsigned char>, int>;

struct WordCounts {
  std::map<std::string, int> unigrams;
  std::map<std::string, int> bigrams;  // "word1@word2"
  std::map<std::string, TagCounts> tags;
  Transitions transitions;
};


// Prints the reason of a failure; returns false.
bool Failure(const std::string& message) {
  fprintf(stderr, "zivor-data model: %s\n", message.c_str());
  return false;
}

// The same for a command: returns the exit status 1.
int Fail(const std::string& message) {
  Failure(message);
  return 1;
}

int DayOf(const std::string& paragraph_id) {
  return paragraph_id.size() >= 8 ? atoi(paragraph_id.substr(6, 2).c_str()) : 0;
}

// The words every dictionary holds whatever the corpus: the fixed words, so
// that every pseudo-word has a handle, and every GB2312 Chinese character as
// a word of its own, so that every Chinese atom has one.
std::set<std::string> BaseWords() {
  std::set<std::string> words;
  for (const FixedWord& fixed : FixedWords()) words.insert(fixed.word);
  for (int lead = 0xB0; lead <= 0xF7; ++lead) {
    for (int trail = 0xA1; trail <= 0xFE; ++trail) {
      words.insert(std::string{static_cast<char>(lead), static_cast<char>(trail)});
    }
  }
  return words;
}

bool WriteLines(const std::string& path, const std::vector<std::string>& lines) {
  FILE* fp = fopen(path.c_str(), "wb");
  if (fp == nullptr) return false;
  for (const std::string& line : lines) fprintf(fp, "%s\n", line.c_str());
  return fclose(fp) == 0;
}

// Builds the dictionary of `words` through its importer: handle i + 1 for
// the i-th word. Fails unless every word is found under its own handle (the
// dictionary cannot find a one-character word of its most frequent
// character when no longer word contains that character).
bool BuildDictionary(const std::vector<std::string>& words, const std::string& list_path,
                     CPDAT* dict) {
  dict->SetImportProgress(false);
  if (!WriteLines(list_path, words) ||
      dict->Import(list_path.c_str()) != static_cast<int>(words.size())) {
    return false;
  }
  for (size_t i = 0; i < words.size(); ++i) {
    if (dict->Find(words[i].c_str()) != static_cast<int>(i) + 1) {
      fprintf(stderr, "zivor-data model: the dictionary does not find \"%s\"\n",
              words[i].c_str());
      return false;
    }
  }
  return true;
}

// Words and pairs are counted on the words the segmenter will meet: a
// person name is still in pieces then (the recogniser merges it after the
// path is chosen), so a name counts as its characters there. Tags and tag
// transitions are counted on the words the tagger will meet, where the name
// is 未##人.
void CountSentence(const ModelSentence& sentence, unsigned char begin_tag, unsigned char end_tag,
                   WordCounts* counts) {
  const std::string person = FixedWordText(&gUnknown_nr_ID);
  std::string previous = FixedWordText(&gSent_StartID);
  unsigned char previous_tag = begin_tag;
  ++counts->unigrams[previous];
  ++counts->tags[previous][begin_tag];
  auto add_word = [&](const std::string& word) {
    ++counts->unigrams[word];
    // The bigram importer splits a pair at its first '@'.
    if (previous.find('@') == std::string::npos) ++counts->bigrams[previous + "@" + word];
    previous = word;
  };
  auto add_tag = [&](const std::string& word, unsigned char tag) {
    ++counts->tags[word][tag];
    ++counts->transitions[{previous_tag, tag}];
    previous_tag = tag;
  };
  for (const ModelToken& token : sentence.tokens) {
    if (token.word == person) {
      for (size_t i = 0; i < token.text.size();) {
        const size_t bytes = static_cast<unsigned char>(token.text[i]) >= 0x80 ? 2 : 1;
        add_word(FoldAscii(token.text.substr(i, bytes)));
        i += bytes;
      }
      ++counts->unigrams[person];
    } else {
      add_word(token.word);
    }
    add_tag(token.word, token.tag);
  }
  add_word(FixedWordText(&gSent_EndID));
  add_tag(FixedWordText(&gSent_EndID), end_tag);
}

std::string Line(const std::string& word, int a, int b) {
  return word + " " + std::to_string(a) + " " + std::to_string(b);
}

std::string Line(const std::string& word, int count) { return word + " " + std::to_string(count); }

int RunModel(const std::vector<std::string>& raw);

// The person-name roles are counted on each part of the training sentences
// segmented with word tables counted on the other parts. Segmented with the
// tables of all of them, the training text shows the role tagger almost no
// name piece fused with a neighbour and no unknown word in pieces (刘桥 as
// 刘 桥), while new text shows many; on days 25-27 (trained on days 1-24)
// 10 parts gave names F 0.846 against 0.843 for one (2 parts 0.840, 5
// 0.844, 20 and 40 0.846).
const int kRoleFolds = 10;

// The count of a word of the general word list in the word tables. The
// list's own counts come from other text; scaled to the corpus's total
// (at most 3 or 20) or flat at 2 or 5, they gave the same or lower F on days
// 25-27 (0.9575, 0.9574; 0.9571, 0.9562) than 1 (0.9575).
const int kLexiconCount = 1;

// The least lead, in perceptron updates, of every label of a word the
// character model merges (CCharModel::Merge).
const double kCharMargin = 5.0;

const DataCommand kModel{
    "model",
    "model --corpus FILE... --out DIR [--exclude-days D1-D2] [--drop-words FILE] "
    "[--lexicon FILE] [--char-margin X] [--keep-text]",
    "every trained data file of DIR (which must hold charset.type and ZIVOR.map) from the "
    "annotated corpus (--drop-words keeps the listed words out of the dictionary, their "
    "tokens counted as their pieces; --lexicon adds the words of a general word list, "
    "\"WORD COUNT [TAG]\" lines in UTF-8; --char-margin sets the least lead of a label of a "
    "word the character model finds; --keep-text keeps the text forms of the tables)",
    RunModel};

// What the model is trained from besides the corpus.
struct ModelInputs {
  std::set<std::string> dropped;      // words kept out of the dictionary
  std::vector<LexiconLine> lexicon;   // the general word list, if any
  double char_margin = kCharMargin;   // the character model's least label lead
};

class ModelBuilder {
 public:
  ModelBuilder(const std::string& out, const ScratchDir& temp, ModelInputs inputs)
      : out_(out), temp_(temp), dropped_(std::move(inputs.dropped)),
        lexicon_lines_(std::move(inputs.lexicon)), char_margin_(inputs.char_margin) {}

  int Run(const std::vector<std::string>& corpora, int first_day, int last_day);

 private:
  std::string Out(const char* name) const { return out_ + "/" + name; }
  bool ReadCorpus(const std::vector<std::string>& corpora, int first_day, int last_day);
  void SelectLexicon();
  // A word's count for the word tables: its count in `counts`, else its
  // count in the general word list, else 0.
  int WordCount(const WordCounts& counts, const std::string& word) const;
  // A dictionary word that no count gives a frequency.
  const std::string* UncountedWord() const;
  bool WriteWordTables();
  bool WriteTagTables();
  bool WriteRoleTables();
  // The lexicon, statistics and automaton of one role inventory, as
  // PREFIX.role, PREFIX.ctx and PREFIX.fsa.
  bool WriteRoleSet(const RoleCounts& counts, unsigned char role_count, const std::string& prefix,
                    bool (*write_automaton)(const std::string&));
  bool WriteTransliterationTable();
  bool WriteCharModel();
  bool SaveContext(const CContextStat& stat, const char* name) const;
  bool WriteFoldTables(const WordCounts& counts, const std::string& name, CUnigram* unigram,
                       CBigram* bigram) const;

  const std::string out_;
  const ScratchDir& temp_;
  const std::set<std::string> dropped_;  // words kept out of the dictionary
  const std::vector<LexiconLine> lexicon_lines_;
  const double char_margin_;
  std::map<std::string, LexiconWord> lexicon_;  // the words added from the list
  LexiconTagMap tag_map_;                       // their tags
  CCharset charset_;
  CPOSmap map_;
  CPDAT dict_;
  CUnigram unigram_;
  CBigram bigram_;
  std::vector<std::string> words_;  // by handle - 1
  std::vector<ModelSentence> sentences_;
  WordCounts counts_;
};

int ModelBuilder::Run(const std::vector<std::string>& corpora, int first_day, int last_day) {
  if (!charset_.Load(Out("charset.type").c_str())) {
    return Fail("cannot read " + Out("charset.type"));
  }
  if (!map_.Load(Out("ZIVOR.map").c_str())) return Fail("cannot read " + Out("ZIVOR.map"));
  const bool built =
      ReadCorpus(corpora, first_day, last_day) &&
      (WriteWordTables() || Failure("cannot build the dictionary and word tables")) &&
      (WriteTagTables() || Failure("cannot build the tag lexicon and statistics")) &&
      (WriteRoleTables() || Failure("cannot build the person-name and place-name tables")) &&
      (WriteTransliterationTable() || Failure("cannot build the transliteration table")) &&
      (WriteCharModel() || Failure("cannot build the character model"));
  if (!built) return 1;
  printf("%zu sentences, %zu words, %zu pairs, total word frequency %d\n", sentences_.size(),
         words_.size(), counts_.bigrams.size(), unigram_.GetTotalFreq());
  return 0;
}

bool ModelBuilder::ReadCorpus(const std::vector<std::string>& corpora, int first_day,
                              int last_day) {
  // Class atoms are recognised against the dictionary of base words only,
  // where no multi-character number or time is a word.
  const std::set<std::string> base = BaseWords();
  CPDAT base_dict;
  if (!BuildDictionary({base.begin(), base.end()}, temp_.File("base.txt"), &base_dict)) {
    return Failure("cannot build the base dictionary");
  }
  ResolveFixedWords(base_dict);
  const TagRefiner tags(map_);
  ModelCorpusReader reader(tags, &charset_, &base_dict);
  for (const std::string& corpus : corpora) {
    const bool opened = ForEachCorpusParagraph(corpus, [&](const CorpusParagraph& paragraph) {
      const int day = DayOf(paragraph.id);
      if (day < first_day || day > last_day) reader.Add(paragraph, &sentences_);
    });
    if (!opened) return Failure("cannot open " + corpus);
  }
  if (!dropped_.empty()) {
    const int split = SplitDroppedWords(dropped_, &sentences_);
    printf("%d tokens of the %zu dropped words counted as their pieces\n", split,
           dropped_.size());
  }
  const unsigned char begin = tags.Id("begin"), end = tags.Id("end");
  for (const ModelSentence& sentence : sentences_) CountSentence(sentence, begin, end, &counts_);
  if (!lexicon_lines_.empty()) SelectLexicon();
  return true;
}

void ModelBuilder::SelectLexicon() {
  std::set<std::string> vocabulary;
  for (const auto& entry : counts_.unigrams) vocabulary.insert(entry.first);
  LexiconSelector selector(lexicon_lines_, vocabulary);
  selector.MarkWrittenSplit(sentences_);
  for (const auto& [word, list_tag] : selector.KnownWords()) {
    const auto tags = counts_.tags.find(word);
    if (tags != counts_.tags.end()) tag_map_.Observe(list_tag, word, tags->second);
  }
  LexiconSummary summary;
  for (LexiconWord& word : selector.Select(kLexiconCount, &summary)) {
    std::string key = word.word;
    lexicon_.emplace(std::move(key), std::move(word));
  }
  printf("word list: %d words added; left out %d known, %d names or numerals, %d not Chinese, "
         "%d compounds of known words, %d written as several tokens\n",
         summary.kept, summary.known, summary.name_or_number, summary.not_chinese,
         summary.compound, summary.written_split);
}

int ModelBuilder::WordCount(const WordCounts& counts, const std::string& word) const {
  const auto found = counts.unigrams.find(word);
  if (found != counts.unigrams.end()) return found->second;
  const auto listed = lexicon_.find(word);
  return listed != lexicon_.end() ? listed->second.count : 0;
}

const std::string* ModelBuilder::UncountedWord() const {
  for (const std::string& word : words_) {
    if (counts_.unigrams.count(word) == 0 && lexicon_.count(word) == 0) return &word;
  }
  return nullptr;
}

// Core dictionary: the base words and every counted word, in byte order.
// Unigram table: a line for every word, 0 for the characters the corpus
// does not use, and the line of one such word repeated, because the table
// answers only handles below its number of lines and the highest handle
// must be answered.
bool ModelBuilder::WriteWordTables() {
  std::set<std::string> words = BaseWords();
  for (const auto& entry : counts_.unigrams) words.insert(entry.first);
  for (const auto& entry : lexicon_) words.insert(entry.first);
  // Every Chinese character of the corpus is a word too, also those outside
  // GB2312 and those seen only inside names (镕), so that its atom has a
  // handle and the role tagger knows what it did in names. The symbol rows
  // (lead bytes 0xA1 to 0xA9) stay out: a full-width digit or letter is a
  // number or Latin atom, which a dictionary handle would replace.
  for (const ModelSentence& sentence : sentences_) {
    const std::string& text = sentence.text;
    for (size_t i = 0; i + 1 < text.size(); ++i) {
      const unsigned char lead = static_cast<unsigned char>(text[i]);
      if (lead < 0x80) continue;
      if (lead < 0xA1 || lead > 0xA9) words.insert(text.substr(i, 2));
      ++i;
    }
  }
  words_.assign(words.begin(), words.end());
  if (!BuildDictionary(words_, temp_.File("words.txt"), &dict_) ||
      !dict_.Save(Out("CoreDict.pdat").c_str())) {
    return false;
  }
  ResolveFixedWords(dict_);
  std::vector<std::string> lines;
  for (const std::string& word : words_) lines.push_back(Line(word, WordCount(counts_, word)));
  const std::string* unused = UncountedWord();
  if (unused == nullptr) return false;
  lines.push_back(Line(*unused, 0));
  std::vector<std::string> pairs;
  for (const auto& [pair, count] : counts_.bigrams) pairs.push_back(Line(pair, count));
  return WriteLines(temp_.File("unigrams.txt"), lines) &&
         unigram_.Import(temp_.File("unigrams.txt").c_str(), &dict_) > 0 &&
         unigram_.Save(Out("CoreDict.unig").c_str()) &&
         WriteLines(temp_.File("bigrams.txt"), pairs) &&
         bigram_.Import(temp_.File("bigrams.txt").c_str(), &dict_) > 0 &&
         bigram_.Save(Out("BiWord.big").c_str());
}

// Core tag lexicon: the counted tags of every word; a pseudo-word carries its
// one tag only (its tokens were given it when read, and one the corpus does
// not produce gets it with count 1). A word the corpus never shows, a
// character seen only inside person names or not at all, gets the default
// tag n, which is what the tagger would give it anyway. The lines go out in
// handle and tag order, the only order the importer keeps intact.
bool ModelBuilder::WriteTagTables() {
  std::map<std::string, unsigned char> pseudo_tags;
  for (const FixedWord& fixed : FixedWords()) {
    if (fixed.tag != nullptr) pseudo_tags[fixed.word] = map_.GetID(fixed.tag);
  }
  const unsigned char noun = map_.GetID("n");
  std::vector<std::string> lines;
  for (const std::string& word : words_) {
    const auto found = counts_.tags.find(word);
    if (found != counts_.tags.end()) {
      for (const auto& [tag, count] : found->second) lines.push_back(Line(word, tag, count));
      continue;
    }
    const auto listed = lexicon_.find(word);
    if (listed != lexicon_.end()) {
      for (const auto& [tag, count] : tag_map_.Tags(listed->second.tag, word, noun)) {
        lines.push_back(Line(word, tag, count));
      }
      continue;
    }
    const auto pseudo = pseudo_tags.find(word);
    lines.push_back(Line(word, pseudo != pseudo_tags.end() ? pseudo->second : noun, 1));
  }
  CPOS lexicon;
  CContextStat stat;
  stat.SetSymbol(map_.GetItemCount());
  for (const auto& [pair, count] : counts_.transitions) stat.Add(pair.first, pair.second, count);
  return WriteLines(temp_.File("lexicon.txt"), lines) &&
         lexicon.Import(temp_.File("lexicon.txt").c_str(), &dict_, nullptr) > 0 &&
         lexicon.Save(Out("CoreDict.pos").c_str()) && SaveContext(stat, "ZIVOR.ctx");
}

bool ModelBuilder::WriteRoleTables() {
  const std::set<unsigned char> place_tags = {map_.GetID("ns"), map_.GetID("nsf")};
  auto place_roles = [&place_tags](const std::string&, const std::vector<word_t>& path,
                                   const std::vector<ModelToken>& tokens) {
    return AssignPlaceRoles(path, tokens, place_tags);
  };
  RoleTrainer names(&charset_, &dict_, &unigram_, &bigram_, RoleTrainer::AssignRoles);
  RoleTrainer places(&charset_, &dict_, &unigram_, &bigram_, place_roles,
                     RoleTrainer::Lattice::kCountedWords);
  const int folds = kRoleFolds;
  const size_t n = sentences_.size();
  for (int fold = 0; fold < folds; ++fold) {
    const size_t begin = n * fold / folds, end = n * (fold + 1) / folds;
    WordCounts held;  // only its words and pairs are used
    for (size_t i = 0; i < n; ++i) {
      if (folds > 1 && i >= begin && i < end) continue;
      CountSentence(sentences_[i], 0, 0, &held);
    }
    CUnigram unigram;
    CBigram bigram;
    const std::string fold_name = std::to_string(fold);
    if (!WriteFoldTables(held, fold_name, &unigram, &bigram)) return false;
    for (RoleTrainer* trainer : {&names, &places}) {
      trainer->UseTables(&unigram, &bigram);
      for (size_t i = begin; i < end; ++i) trainer->Add(sentences_[i]);
    }
  }
  return WriteRoleSet(names.Counts(), kRoleCount, "nr", WriteNameAutomaton) &&
         WriteRoleSet(places.Counts(), kPlaceRoleCount, "ns", WritePlaceAutomaton);
}

bool ModelBuilder::WriteRoleSet(const RoleCounts& counts, unsigned char role_count,
                                const std::string& prefix,
                                bool (*write_automaton)(const std::string&)) {
  std::vector<std::string> lines;
  for (const auto& [key, count] : counts.Lexicon()) {
    lines.push_back(Line(words_[key.first - 1], key.second, count));
  }
  CPOS roles;
  CContextStat stat;
  stat.SetSymbol(role_count);
  counts.AddTransitions(&stat);
  CFSA automaton;
  const std::string lexicon_text = temp_.File(prefix + "-roles.txt");
  const std::string automaton_text = temp_.File(prefix + "-fsa.txt");
  return WriteLines(lexicon_text, lines) &&
         roles.Import(lexicon_text.c_str(), &dict_, nullptr) > 0 &&
         roles.Save(Out((prefix + ".role").c_str()).c_str()) &&
         SaveContext(stat, (prefix + ".ctx").c_str()) && write_automaton(automaton_text) &&
         automaton.Import(automaton_text.c_str()) &&
         automaton.Save(Out((prefix + ".fsa").c_str()).c_str());
}

// Character counts of transliterated names and places (ModelTransliteration).
bool ModelBuilder::WriteTransliterationTable() {
  TransliterationCounter counter({map_.GetID("ns"), map_.GetID("nsf")});
  for (const ModelSentence& sentence : sentences_) counter.Add(sentence);
  CPOS table;
  return WriteLines(temp_.File("transliteration.txt"), counter.Lines()) &&
         table.Import(temp_.File("transliteration.txt").c_str(), &dict_, nullptr) > 0 &&
         table.Save(Out("tr.char").c_str());
}

// The character tagger for words no dictionary holds (ModelCharTagger).
bool ModelBuilder::WriteCharModel() {
  CharTaggerTrainer trainer(map_.GetID("nr"));
  for (const ModelSentence& sentence : sentences_) trainer.Add(sentence);
  const auto begin = std::chrono::steady_clock::now();
  const CCharModel::Data model = trainer.Train(char_margin_);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  printf("character model: %zu characters, %zu features, trained in %.1f s\n", model.codes.size(),
         model.keys.size(), took.count());
  return CCharModel::Save(model, Out("char.model").c_str());
}

// Unigram and bigram tables over the dictionary's handles from other counts
// (those of the sentences outside one fold), laid out as WriteWordTables
// lays out the shipped ones.
bool ModelBuilder::WriteFoldTables(const WordCounts& counts, const std::string& name,
                                   CUnigram* unigram, CBigram* bigram) const {
  std::vector<std::string> lines;
  for (const std::string& word : words_) lines.push_back(Line(word, WordCount(counts, word)));
  const std::string* unused = UncountedWord();
  if (unused == nullptr) return false;
  lines.push_back(Line(*unused, 0));
  std::vector<std::string> pairs;
  for (const auto& [pair, count] : counts.bigrams) pairs.push_back(Line(pair, count));
  CPDAT* dict = const_cast<CPDAT*>(&dict_);
  const std::string unigram_path = temp_.File(("fold-unigrams-" + name + ".txt").c_str());
  const std::string bigram_path = temp_.File(("fold-bigrams-" + name + ".txt").c_str());
  return WriteLines(unigram_path, lines) && unigram->Import(unigram_path.c_str(), dict) > 0 &&
         WriteLines(bigram_path, pairs) && bigram->Import(bigram_path.c_str(), dict) > 0;
}

// Saving also writes a readable table beside the binary; it is not shipped.
bool ModelBuilder::SaveContext(const CContextStat& stat, const char* name) const {
  if (!stat.Save(Out(name).c_str(), map_)) return false;
  std::error_code ignored;
  fs::remove(Out(name) + ".shw", ignored);
  return true;
}

// The words of a --drop-words file, ASCII letters folded as the dictionary
// folds them.
bool ReadDroppedWords(const std::string& path, std::set<std::string>* words) {
  std::set<std::string> listed;
  if (!ReadWordList(path, &listed)) return false;
  for (const std::string& word : listed) words->insert(FoldAscii(word));
  return true;
}

int RunModel(const std::vector<std::string>& raw) {
  const ArgList args(raw, {"--corpus", "--out", "--exclude-days", "--drop-words", "--lexicon",
                                "--char-margin"});
  // "--corpus A B C": the first file is the option's value, the rest positional.
  std::vector<std::string> corpora = args.positional();
  if (!args.Option("--corpus").empty()) corpora.insert(corpora.begin(), args.Option("--corpus"));
  int first_day = 0, last_day = -1;
  ModelInputs inputs;
  if (!args.ok() || corpora.empty() || args.Option("--out").empty() ||
      !ParseDayRange(args.Option("--exclude-days"), &first_day, &last_day)) {
    return UsageError(kModel);
  }
  const std::string margin = args.Option("--char-margin");
  if (!margin.empty()) {
    char* end = nullptr;
    inputs.char_margin = strtod(margin.c_str(), &end);
    if (*end != '\0' || !(inputs.char_margin >= 0)) return UsageError(kModel);
  }
  ScratchDir temp("zivor-model");
  if (!temp.ok()) return Fail("cannot create a temporary directory");
  if (args.HasFlag("--keep-text")) {
    temp.Keep();
    printf("text forms kept in %s\n", temp.path().c_str());
  }
  const std::string drop_file = args.Option("--drop-words");
  if (!drop_file.empty() && !ReadDroppedWords(drop_file, &inputs.dropped)) {
    return Fail("cannot read " + drop_file);
  }
  std::string error;
  const std::string lexicon = args.Option("--lexicon");
  if (!lexicon.empty() && !ReadLexiconLines(lexicon, &inputs.lexicon, &error)) return Fail(error);
  ModelBuilder builder(args.Option("--out"), temp, std::move(inputs));
  return builder.Run(corpora, first_day, last_day);
}

}  // namespace

ZIVOR_DATA_COMMAND(kModel);
