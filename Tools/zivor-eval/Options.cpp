// Options.cpp: parsing the command line of zivor-eval (Options.h).
#include "Options.h"

#include <cstdio>
#include <cstdlib>

namespace eval {

const char* Usage() {
  return R"(usage: zivor-eval [options] GOLD
       zivor-eval [options] --segmented FILE

Analyses the raw text of a gold file (each paragraph's words joined) with the
library and compares the result with the gold words.

GOLD is in the annotated corpus format (one paragraph a line: the id, then
word/TAG tokens; brackets group compound names). --segmented FILE takes plain
segmented text instead (one paragraph a line, words separated by blanks, tabs
or ideographic spaces, as segmentation benchmarks are published) and scores
segmentation only.
Either is read in the encoding of -e, in which the library analyses the raw
text and returns the words, so that both sides are compared in the same
bytes.

Options:
  -d DIR           directory holding Data (default: the current directory)
  -e ENCODING      the encoding of the gold file, and of the word lists of
                   --vocab, --train and --new-words: utf8 (also utf-8), gbk,
                   big5 or gbkc (GBK written with traditional characters).
                   Default: utf8 when every line of the gold file is
                   well-formed UTF-8, else gbk
  --days SET       evaluate only the paragraphs of these days of the month,
                   e.g. 25-27, 3, 1-5,9 (from the paragraph id 199801DD-...)
  --vocab FILE     training vocabulary, one word a line, for the OOV figures
  --train CORPUS   collect the training vocabulary from an annotated corpus ...
  --exclude-days SET  ... leaving out these days (default: the --days set)
  --errors N       print the N most frequent errors of each kind
  --no-tags        also time segmentation alone (tagging off in the call)
  --no-person      also evaluate with person recognition off (a temporary copy
                   of Data whose Configure.xml says <Person>off</Person>)
  --json           print the figures as one JSON object instead
  --new-words FILE instead of scoring, run the new-word collection
                   (ZIVOR_NWI_Start, ZIVOR_NWI_AddMem of each paragraph's raw
                   text, ZIVOR_NWI_Complete) and print its top new words,
                   marking and counting those listed in FILE (one word a
                   line: the words the data was built without, see
                   zivor-data model --drop-words)
  --top N          new words printed and searched for hits (default 50)
  --keywords-articles K
                   instead of scoring, print the 15 keywords with weights of K
                   articles (paragraphs sharing the first three id fields) of
                   at least 1,500 characters: the first of each day in turn
  -h, --help       this text

Figures:
  segmentation     words are byte spans of the paragraph; precision = correct
                   spans / system words, recall = correct spans / gold words,
                   F = 2PR / (P + R)
  OOV              gold words absent from the vocabulary: their share of the
                   gold words, and the share of them segmented correctly
  tags             accuracy over correctly segmented words. Refined: the
                   system's level-0 tag against the gold tag refined as the
                   training data builder refines it (TagRefiner,
                   Tools/corpus/TagRefiner.h, on the word converted to GBK)
                   over Data/ZIVOR.map.
                   Coarse: the PKU tag of the system's tag identifier
                   (Data/PKU.map: nr1 nr2 nrj nrf count as nr, ng as Ng, al vl
                   nl bl as l, url email as nx, ...) against the gold tag as
                   written. A bracketed group is scored by its inner words.
  names            a name is a word whose coarse tag is nr, on both sides; in
                   the gold two adjacent nr tokens of one or two characters
                   each (surname, given name) are first merged into one word,
                   as the training data builder reads them, for segmentation
                   as well; a name counts when its span matches exactly
  places           the same for words whose coarse tag is ns (nsf counts as
                   ns)
  speed            MB/s = bytes of raw text / 10^6 / wall seconds spent in the
                   analysis calls alone (ZIVOR_ParagraphProcessA; with
                   --no-tags, ZIVOR_ParagraphProcess with bPOStagged 0)
Words in the report are in the encoding of the gold file.
)";
}

namespace {

bool ParseDays(const std::string& text, const char* option, DaySet* days, std::string* error) {
  if (days->Parse(text)) return true;
  *error = std::string("bad day set for ") + option + ": " + text;
  return false;
}

bool TakesValue(const std::string& arg) {
  for (const char* option :
       {"-d", "-e", "--segmented", "--vocab", "--train", "--days", "--exclude-days", "--errors",
        "--new-words", "--top", "--keywords-articles"}) {
    if (arg == option) return true;
  }
  return false;
}

bool ParseCount(const std::string& text, const char* option, size_t* count,
                std::string* error) {
  char* end = nullptr;
  const long value = strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || value < 0) {
    *error = std::string("bad count for ") + option + ": " + text;
    return false;
  }
  *count = static_cast<size_t>(value);
  return true;
}

bool ParseEncoding(const std::string& text, Options* options, std::string* error) {
  const Encoding* encoding = FindEncoding(text);
  if (encoding == nullptr) {
    *error = "bad encoding for -e: " + text + " (" + kEncodingNames + ")";
    return false;
  }
  options->encoding = *encoding;
  options->encoding_given = true;
  return true;
}

bool Check(const Options& options, std::string* error) {
  if (options.help) return true;
  if (options.gold.empty() == options.segmented.empty()) {
    *error = "name one gold file: GOLD or --segmented FILE";
  } else if (!options.segmented.empty() && !options.days_text.empty()) {
    *error = "--days needs the annotated format (plain segmented text has no ids)";
  } else if (!options.vocab.empty() && !options.train.empty()) {
    *error = "give --vocab or --train, not both";
  } else if (!options.exclude_text.empty() && options.train.empty()) {
    *error = "--exclude-days needs --train";
  } else if (!options.new_words.empty() && options.keyword_articles > 0) {
    *error = "give --new-words or --keywords-articles, not both";
  } else if ((!options.new_words.empty() || options.keyword_articles > 0) &&
             !options.segmented.empty()) {
    *error = "--new-words and --keywords-articles need the annotated format";
  }
  return error->empty();
}

}  // namespace

bool ParseOptions(int argc, char** argv, Options* options, std::string* error) {
  error->clear();
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const bool has_value = i + 1 < argc;
    auto value = [&]() { return std::string(argv[++i]); };
    if (arg == "-h" || arg == "--help") {
      options->help = true;
    } else if (arg == "--json") {
      options->json = true;
    } else if (arg == "--no-tags") {
      options->no_tags = true;
    } else if (arg == "--no-person") {
      options->no_person = true;
    } else if (TakesValue(arg) && !has_value) {
      *error = "missing value after " + arg;
      return false;
    } else if (arg == "-d") {
      options->dir = value();
    } else if (arg == "-e") {
      if (!ParseEncoding(value(), options, error)) return false;
    } else if (arg == "--segmented") {
      options->segmented = value();
    } else if (arg == "--vocab") {
      options->vocab = value();
    } else if (arg == "--train") {
      options->train = value();
    } else if (arg == "--days") {
      options->days_text = value();
      if (!ParseDays(options->days_text, "--days", &options->days, error)) return false;
    } else if (arg == "--exclude-days") {
      options->exclude_text = value();
      if (!ParseDays(options->exclude_text, "--exclude-days", &options->exclude, error)) {
        return false;
      }
    } else if (arg == "--errors") {
      if (!ParseCount(value(), "--errors", &options->errors, error)) return false;
    } else if (arg == "--top") {
      if (!ParseCount(value(), "--top", &options->top, error)) return false;
    } else if (arg == "--keywords-articles") {
      if (!ParseCount(value(), "--keywords-articles", &options->keyword_articles, error)) {
        return false;
      }
    } else if (arg == "--new-words") {
      options->new_words = value();
    } else if (arg[0] == '-' && arg.size() > 1) {
      *error = "unknown option " + arg;
      return false;
    } else if (options->gold.empty()) {
      options->gold = arg;
    } else {
      *error = "more than one gold file: " + arg;
      return false;
    }
  }
  if (!options->train.empty() && options->exclude_text.empty()) {
    options->exclude = options->days;
  }
  return Check(*options, error);
}

const std::string& GoldPath(const Options& options) {
  return options.segmented.empty() ? options.gold : options.segmented;
}

void ResolveEncoding(Options* options) {
  const std::string& gold = GoldPath(*options);
  if (!options->encoding_given) {
    const bool utf8 = FirstMismatch(gold, kUtf8Encoding).empty();
    options->encoding = utf8 ? kUtf8Encoding : kGbkEncoding;
    return;
  }
  const std::string mismatch = FirstMismatch(gold, options->encoding);
  if (!mismatch.empty()) fprintf(stderr, "zivor-eval: warning: %s\n", mismatch.c_str());
}

}  // namespace eval
