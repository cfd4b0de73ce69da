// main.cpp: zivor-eval, which scores the analyser against a gold-segmented,
// tagged text (or plain segmented text) and measures its speed. --help
// describes the figures.
#include <cstdio>
#include <string>
#include <vector>

#include "Analyzer.h"
#include "Gold.h"
#include "KeyWords.h"
#include "Options.h"
#include "Report.h"
#include "Score.h"

namespace eval {
namespace {

int Fail(const std::string& message) {
  fprintf(stderr, "zivor-eval: %s\n", message.c_str());
  return 1;
}

// False, with the reason in `error`, when the gold text cannot be read.
bool ReadGold(const Options& options, std::vector<GoldParagraph>* gold, ReportHeader* header,
              std::string* error) {
  const bool plain = !options.segmented.empty();
  header->tagged_gold = !plain;
  header->gold = plain ? options.segmented + " (plain segmented)" : options.gold;
  if (!options.days_text.empty()) header->gold += ", days " + options.days_text;
  header->encoding = std::string(options.encoding.label) +
                     (options.encoding_given ? " (given)" : " (detected)");
  GoldTags tags;
  const std::string data = options.dir + "/Data";
  if (!plain && !tags.Load(data, options.encoding)) {
    *error = "cannot read the tag map " + data + "/ZIVOR.map";
    return false;
  }
  const bool read =
      plain ? ReadSegmentedGold(options.segmented, options.encoding.layout, gold)
            : ReadCorpusGold(options.gold, options.days, tags, options.encoding.layout, gold);
  if (!read) *error = "cannot read " + header->gold;
  return read;
}

// False when a vocabulary was asked for and cannot be read.
bool ReadVocabulary(const Options& options, Vocabulary* vocabulary, ReportHeader* header) {
  if (!options.vocab.empty()) {
    header->vocabulary = options.vocab;
    if (!ReadVocabularyFile(options.vocab, vocabulary)) return false;
  } else if (!options.train.empty()) {
    const std::string& excluded =
        options.exclude_text.empty() ? options.days_text : options.exclude_text;
    header->vocabulary =
        options.train + (options.exclude.empty() ? " (all days)" : " without days " + excluded);
    if (!CollectVocabulary(options.train, options.exclude, options.encoding.layout, vocabulary)) {
      return false;
    }
  }
  header->vocabulary_size = vocabulary->size();
  return true;
}

// One scored pass over the gold text; false with `error` when the library
// does not start.
bool Evaluate(const Options& options, bool person, const std::vector<GoldParagraph>& gold,
              const Vocabulary* vocabulary, Run* run, std::string* error) {
  Analyzer analyzer(options.dir, person, options.encoding.code);
  if (!analyzer.ok()) {
    *error = analyzer.error();
    return false;
  }
  run->name = person ? "tags on, person recognition on" : "tags on, person recognition off";
  run->scorer.reset(new Scorer(vocabulary));
  for (const GoldParagraph& paragraph : gold) {
    run->scorer->Add(paragraph, analyzer.Analyse(paragraph.text));
    run->bytes += static_cast<long>(paragraph.text.size());
  }
  run->seconds = analyzer.seconds();
  return true;
}

// A timed pass with tagging off in the call.
bool TimeSegmentation(const Options& options, const std::vector<GoldParagraph>& gold, Run* run,
                      std::string* error) {
  Analyzer analyzer(options.dir, true, options.encoding.code);
  if (!analyzer.ok()) {
    *error = analyzer.error();
    return false;
  }
  run->name = "segmentation only (tagging off), timed";
  for (const GoldParagraph& paragraph : gold) {
    analyzer.Segment(paragraph.text, false);
    run->bytes += static_cast<long>(paragraph.text.size());
  }
  run->seconds = analyzer.seconds();
  return true;
}

int Main(int argc, char** argv) {
  Options options;
  std::string error;
  if (!ParseOptions(argc, argv, &options, &error)) {
    return Fail(error + " (zivor-eval --help for the usage)");
  }
  if (options.help) {
    fputs(Usage(), stdout);
    return 0;
  }
  ResolveEncoding(&options);
  if (!options.new_words.empty()) return RunNewWords(options);
  if (options.keyword_articles > 0) return RunKeyWordArticles(options);
  ReportHeader header;
  std::vector<GoldParagraph> gold;
  if (!ReadGold(options, &gold, &header, &error)) return Fail(error);
  Vocabulary vocabulary;
  if (!ReadVocabulary(options, &vocabulary, &header)) {
    return Fail("cannot read the vocabulary " + header.vocabulary);
  }
  const Vocabulary* known = header.vocabulary.empty() ? nullptr : &vocabulary;

  std::vector<Run> runs(1);
  if (!Evaluate(options, true, gold, known, &runs.back(), &error)) return Fail(error);
  if (options.no_tags) {
    runs.emplace_back();
    if (!TimeSegmentation(options, gold, &runs.back(), &error)) return Fail(error);
  }
  if (options.no_person) {
    runs.emplace_back();
    if (!Evaluate(options, false, gold, known, &runs.back(), &error)) return Fail(error);
  }
  if (options.json) {
    PrintJson(stdout, header, runs, options.errors);
  } else {
    PrintText(stdout, header, runs, options.errors);
  }
  return 0;
}

}  // namespace
}  // namespace eval

int main(int argc, char** argv) { return eval::Main(argc, argv); }
