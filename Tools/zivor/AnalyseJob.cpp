#include "AnalyseJob.h"

#include <unistd.h>

#include <fstream>
#include <iostream>
#include <utility>

#include "AnalysisPipeline.h"
#include "Formatter.h"
#include "InputFiles.h"
#include "LinePieces.h"
#include "Progress.h"

namespace {

// Adds the pieces of every line of `in`; false once an analysis failed.
bool AddStream(std::istream& in, const Formatter& formatter, InputReader* input,
               AnalysisPipeline* pipeline) {
  LinePieces pieces(in, input);
  Piece piece;
  size_t lineChars = 0;  // characters of the line's earlier pieces
  while (pieces.Next(&piece.text, &piece.lineEnd, &piece.byteStart)) {
    if (piece.byteStart == 0) lineChars = 0;
    piece.charStart = lineChars;
    if (!piece.lineEnd && formatter.CountsCharacters()) {
      lineChars += formatter.Characters(piece.text.data(), piece.text.size());
    }
    if (!pipeline->Add(std::move(piece))) return false;
    piece = Piece();
  }
  return true;
}

}  // namespace

int RunAnalysis(const Options& options, InputReader* input) {
  const Formatter formatter(options);
  Progress progress(TotalBytes(options.inputs), isatty(2) != 0);
  AnalysisPipeline pipeline(formatter, options.jobs, stdout, &progress);
  int status = 0;
  for (const InputFile& file : options.inputs) {
    bool analysed = true;
    if (file.IsStandardInput()) {
      analysed = AddStream(std::cin, formatter, input, &pipeline);
    } else {
      std::ifstream in;
      if (!OpenInput(file, &in)) {
        status = 1;
        continue;
      }
      analysed = AddStream(in, formatter, input, &pipeline);
    }
    if (!analysed) return 1;
  }
  return pipeline.Finish() ? status : 1;
}
