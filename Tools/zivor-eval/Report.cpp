// Report.cpp: printing the figures (Report.h).
#include "Report.h"

namespace eval {
namespace {

double Ratio(long part, long whole) { return whole > 0 ? static_cast<double>(part) / whole : 0.0; }

double FScore(double precision, double recall) {
  return precision + recall > 0 ? 2 * precision * recall / (precision + recall) : 0.0;
}

double MegabytesPerSecond(const Run& run) {
  return run.seconds > 0 ? run.bytes / 1e6 / run.seconds : 0.0;
}

// "0.9512 (9512/10000)"
std::string Fraction(long part, long whole) {
  char buffer[96];
  snprintf(buffer, sizeof buffer, "%.4f (%ld/%ld)", Ratio(part, whole), part, whole);
  return buffer;
}

void PrintPRF(FILE* out, const char* what, long correct, long system, long gold) {
  const double p = Ratio(correct, system), r = Ratio(correct, gold);
  fprintf(out, "%-13s P %s  R %s  F %.4f\n", what, Fraction(correct, system).c_str(),
          Fraction(correct, gold).c_str(), FScore(p, r));
}

void PrintScores(FILE* out, const ReportHeader& header, const Counts& c) {
  PrintPRF(out, "segmentation", c.correct_words, c.system_words, c.gold_words);
  if (!header.vocabulary.empty()) {
    fprintf(out, "%-13s rate %s  recall %s  IV recall %s\n", "OOV",
            Fraction(c.oov_words, c.gold_words).c_str(),
            Fraction(c.oov_correct, c.oov_words).c_str(),
            Fraction(c.correct_words - c.oov_correct, c.gold_words - c.oov_words).c_str());
  }
  if (!header.tagged_gold) return;
  fprintf(out, "%-13s refined %s  coarse %s\n", "tags",
          Fraction(c.refined_correct, c.tag_scored).c_str(),
          Fraction(c.coarse_correct, c.tag_scored).c_str());
  PrintPRF(out, "names", c.names.correct, c.names.system, c.names.gold);
  PrintPRF(out, "places", c.places.correct, c.places.system, c.places.gold);
}

void PrintErrors(FILE* out, const Scorer& scorer, size_t n) {
  for (int kind = 0; kind < kErrorKinds; ++kind) {
    const ErrorTable& table = scorer.errors(static_cast<ErrorKind>(kind));
    if (table.empty()) continue;
    fprintf(out, "  %s:\n", ErrorKindName(static_cast<ErrorKind>(kind)));
    for (const ErrorTable::Entry& entry : table.Top(n)) {
      fprintf(out, "    %6ld  %s", entry.count, entry.error.c_str());
      for (size_t k = 0; k < entry.examples.size(); ++k) {
        fprintf(out, "%s%s", k == 0 ? "   e.g. " : ", ", entry.examples[k].c_str());
      }
      fputc('\n', out);
    }
  }
}

// A JSON string of the gold file's bytes: only the quote, the backslash and
// control characters need escaping; the bytes themselves pass through.
std::string Quote(const std::string& text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      snprintf(escape, sizeof escape, "\\u%04x", c);
      quoted += escape;
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

void JsonPRF(FILE* out, const char* name, long correct, long system, long gold) {
  const double p = Ratio(correct, system), r = Ratio(correct, gold);
  fprintf(out,
          ",\n     \"%s\": {\"precision\": %.4f, \"recall\": %.4f, \"f\": %.4f, "
          "\"correct\": %ld, \"system\": %ld, \"gold\": %ld}",
          name, p, r, FScore(p, r), correct, system, gold);
}

void JsonErrors(FILE* out, const Scorer& scorer, size_t n) {
  fprintf(out, ",\n     \"errors\": {");
  for (int kind = 0; kind < kErrorKinds; ++kind) {
    fprintf(out, "%s%s: [", kind ? ", " : "",
            Quote(ErrorKindName(static_cast<ErrorKind>(kind))).c_str());
    const auto top = scorer.errors(static_cast<ErrorKind>(kind)).Top(n);
    for (size_t k = 0; k < top.size(); ++k) {
      fprintf(out, "%s{\"error\": %s, \"count\": %ld, \"examples\": [", k ? ", " : "",
              Quote(top[k].error).c_str(), top[k].count);
      for (size_t e = 0; e < top[k].examples.size(); ++e) {
        fprintf(out, "%s%s", e ? ", " : "", Quote(top[k].examples[e]).c_str());
      }
      fprintf(out, "]}");
    }
    fprintf(out, "]");
  }
  fprintf(out, "}");
}

void JsonScores(FILE* out, const ReportHeader& header, const Scorer& scorer, size_t errors) {
  const Counts& c = scorer.counts();
  fprintf(out, ", \"paragraphs\": %ld", c.paragraphs);
  JsonPRF(out, "segmentation", c.correct_words, c.system_words, c.gold_words);
  if (!header.vocabulary.empty()) {
    fprintf(out,
            ",\n     \"oov\": {\"rate\": %.4f, \"recall\": %.4f, \"words\": %ld, "
            "\"correct\": %ld}",
            Ratio(c.oov_words, c.gold_words), Ratio(c.oov_correct, c.oov_words), c.oov_words,
            c.oov_correct);
  }
  if (header.tagged_gold) {
    fprintf(out,
            ",\n     \"tags\": {\"refined\": %.4f, \"coarse\": %.4f, \"refined_correct\": %ld, "
            "\"coarse_correct\": %ld, \"scored\": %ld}",
            Ratio(c.refined_correct, c.tag_scored), Ratio(c.coarse_correct, c.tag_scored),
            c.refined_correct, c.coarse_correct, c.tag_scored);
    JsonPRF(out, "names", c.names.correct, c.names.system, c.names.gold);
    JsonPRF(out, "places", c.places.correct, c.places.system, c.places.gold);
  }
  if (errors > 0) JsonErrors(out, scorer, errors);
}

}  // namespace

void PrintText(FILE* out, const ReportHeader& header, const std::vector<Run>& runs, size_t errors) {
  fprintf(out, "gold: %s\n", header.gold.c_str());
  fprintf(out, "encoding: %s\n", header.encoding.c_str());
  if (!header.vocabulary.empty()) {
    fprintf(out, "vocabulary: %zu words from %s\n", header.vocabulary_size,
            header.vocabulary.c_str());
  }
  for (const Run& run : runs) {
    fprintf(out, "\n== %s ==\n", run.name.c_str());
    fprintf(out, "%-13s %.4f MB/s (%ld bytes in %.4f s)\n", "speed", MegabytesPerSecond(run),
            run.bytes, run.seconds);
    if (!run.scorer) continue;
    fprintf(out, "%-13s %ld paragraphs\n", "text", run.scorer->counts().paragraphs);
    PrintScores(out, header, run.scorer->counts());
    if (errors > 0) PrintErrors(out, *run.scorer, errors);
  }
}

void PrintJson(FILE* out, const ReportHeader& header, const std::vector<Run>& runs, size_t errors) {
  fprintf(out, "{\"gold\": %s, \"encoding\": %s", Quote(header.gold).c_str(),
          Quote(header.encoding).c_str());
  if (!header.vocabulary.empty()) {
    fprintf(out, ", \"vocabulary\": %s, \"vocabulary_words\": %zu",
            Quote(header.vocabulary).c_str(), header.vocabulary_size);
  }
  fprintf(out, ",\n \"runs\": [");
  for (size_t i = 0; i < runs.size(); ++i) {
    const Run& run = runs[i];
    fprintf(out, "%s\n    {\"name\": %s, \"bytes\": %ld, \"seconds\": %.4f, \"mb_per_s\": %.4f",
            i ? "," : "", Quote(run.name).c_str(), run.bytes, run.seconds, MegabytesPerSecond(run));
    if (run.scorer) JsonScores(out, header, *run.scorer, errors);
    fprintf(out, "}");
  }
  fprintf(out, "]}\n");
}

}  // namespace eval
