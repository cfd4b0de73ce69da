// Options.h: the command line of zivor-eval.
#ifndef ZIVOR_TOOLS_EVAL_OPTIONS_H_
#define ZIVOR_TOOLS_EVAL_OPTIONS_H_

#include <string>

#include "../zivor/Encoding.h"
#include "Gold.h"

namespace eval {

struct Options {
  std::string dir = ".";  // -d: the directory holding Data
  // -e: the encoding of the gold text, of the analysis and of the word
  // lists. Without -e, ResolveEncoding detects it from the gold file.
  Encoding encoding = kGbkEncoding;
  bool encoding_given = false;
  std::string gold;       // annotated gold file (corpus format)
  std::string segmented;  // --segmented: plain segmented gold instead
  std::string days_text;  // --days as written
  DaySet days;
  std::string vocab;         // --vocab: word list
  std::string train;         // --train: corpus the vocabulary is collected from
  std::string exclude_text;  // --exclude-days as written (default: --days)
  DaySet exclude;
  size_t errors = 0;  // --errors N
  std::string new_words;        // --new-words: words the data was built without
  size_t top = 50;              // --top N: new words listed
  size_t keyword_articles = 0;  // --keywords-articles K
  bool json = false;
  bool no_tags = false;
  bool no_person = false;
  bool help = false;
};

// The usage text printed by --help.
const char* Usage();

// False, with a message in `error`, on a bad command line.
bool ParseOptions(int argc, char** argv, Options* options, std::string* error);

// The gold file: GOLD or the --segmented FILE.
const std::string& GoldPath(const Options& options);

// Without -e, takes UTF-8 when every line of the gold file is well-formed
// UTF-8, else GBK. With -e, warns on standard error when a line of the gold
// file does not fit the encoding given.
void ResolveEncoding(Options* options);

}  // namespace eval

#endif  // ZIVOR_TOOLS_EVAL_OPTIONS_H_
