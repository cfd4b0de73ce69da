// LinePieces.h: the lines of an input, handed over in pieces of bounded size.
//
// A line up to a megabyte comes whole. A longer one comes in pieces cut
// where the library says its analysis allows it (ZIVOR_GetSafeCut), so that
// analysing the pieces one after the other gives exactly the result of the
// whole line, in memory bounded by the piece rather than by the line. The
// pieces are read as InputReader reads lines: NUL bytes become blanks, the
// carriage return before a line feed is dropped, and the text is checked
// against the encoding of the run.
#ifndef ZIVOR_TOOLS_ZIVOR_LINEPIECES_H_
#define ZIVOR_TOOLS_ZIVOR_LINEPIECES_H_

#include <cstddef>
#include <istream>
#include <string>

#include "Input.h"

class LinePieces {
 public:
  // Bytes a piece holds when its line goes on (it may hold more when no
  // cut is found that soon).
  static constexpr size_t kPieceBytes = size_t{1} << 20;

  LinePieces(std::istream& in, InputReader* checker) : in_(in), checker_(checker) {}

  // The next piece into *piece, with *lineEnd true when it ends its line
  // and *lineStart its offset in its line. False at the end of the input.
  bool Next(std::string* piece, bool* lineEnd, size_t* lineStart);

 private:
  // Reads until the pending bytes hold `want` bytes or the rest of the line.
  void Fill(size_t want);

  std::istream& in_;
  InputReader* checker_;
  std::string pending_;      // bytes of the current line not handed over yet
  bool lineComplete_ = false;  // pending_ runs to the end of its line
  bool lineOpen_ = false;      // a piece of the current line was handed over
  size_t handedOver_ = 0;      // bytes of the current line handed over
};

#endif  // ZIVOR_TOOLS_ZIVOR_LINEPIECES_H_
