// Formatter.h: the analysis of a piece of an input line in the output
// format chosen.
//
//   text     the library's analysed text (ZIVOR_ParagraphProcess), a line
//            per input line
//   records  a record per word: start, length, tag, word_ID, word_type,
//            weight, tab-separated with byte offsets; an empty line ends
//            each input line
//   json     one object per input line, {"tokens":[...]}, each token with
//            its word, tag, start and end in characters, byte_start and
//            byte_end in bytes, and weight
//   tsv      a row per word: word, tag, start, end, byte_start, byte_end
//            (the offsets as in json); an empty line ends each input line
//
// The tokens of json and tsv tile the line, blanks included, and their
// words are the input's own bytes. TSV writes a backslash, tab, line feed
// or carriage return in a word as \\, \t, \n or \r. JSON is UTF-8: with
// UTF-8 input a malformed byte sequence in a word is written U+FFFD (the
// offsets still locate it); with GBK, BIG5 or GBKC input each byte above
// 0x7F is written as the character of the same number (\u0080 to \u00ff),
// so that decoding the string as ISO-8859-1 gives the word's bytes back.
//
// Formatting calls the library's analysis and may run on several threads.
#ifndef ZIVOR_TOOLS_ZIVOR_FORMATTER_H_
#define ZIVOR_TOOLS_ZIVOR_FORMATTER_H_

#include <cstddef>
#include <string>

#include "Options.h"
#include "zivor/ZIVORTypes.h"

// A piece of an input line (LinePieces), where it lies in its line.
struct Piece {
  std::string text;
  size_t byteStart = 0;  // offset in the line, in bytes
  size_t charStart = 0;  // and in characters
  bool lineEnd = true;   // the piece is the last of its line
};

class Formatter {
 public:
  explicit Formatter(const Options& options)
      : format_(options.format), tags_(options.tags), layout_(options.encoding.layout) {}

  // Appends the analysis of `piece` to *out; false when the library could
  // not analyse it (the reason is in its log).
  bool Append(const Piece& piece, std::string* out) const;

  // Whether pieces must carry their character offsets.
  bool CountsCharacters() const { return format_ == Format::kJson || format_ == Format::kTsv; }
  // The characters of the bytes in the input's encoding.
  size_t Characters(const char* text, size_t length) const;

 private:
  void AppendRecords(const Piece& piece, const result_t* records, int count,
                     std::string* out) const;
  void AppendJson(const Piece& piece, const result_t* records, int count, std::string* out) const;
  void AppendTsv(const Piece& piece, const result_t* records, int count, std::string* out) const;
  // The word's text as a JSON string, quotes included.
  void AppendJsonString(const char* text, size_t length, std::string* out) const;

  const Format format_;
  const bool tags_;
  const TextLayout layout_;
};

#endif  // ZIVOR_TOOLS_ZIVOR_FORMATTER_H_
