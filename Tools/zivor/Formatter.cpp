#include "Formatter.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "Utility/CharScan.h"
#include "zivor/ZIVOR.h"

namespace {

// The tag of a record, without the NUL filling.
std::string Tag(const result_t& r) { return std::string(r.sPOS, strnlen(r.sPOS, sizeof r.sPOS)); }

void AppendNumber(size_t value, std::string* out) { *out += std::to_string(value); }

void AppendWeight(double weight, std::string* out) {
  char text[64];
  if (std::isfinite(weight)) {
    snprintf(text, sizeof text, "%.6f", weight);
  } else {
    snprintf(text, sizeof text, "null");
  }
  *out += text;
}

// One byte of a word as JSON: escaped when it must be.
void AppendJsonAscii(unsigned char c, std::string* out) {
  switch (c) {
    case '"': *out += "\\\""; return;
    case '\\': *out += "\\\\"; return;
    case '\n': *out += "\\n"; return;
    case '\r': *out += "\\r"; return;
    case '\t': *out += "\\t"; return;
    default: break;
  }
  if (c >= 0x20 && c < 0x80) {
    *out += static_cast<char>(c);
    return;
  }
  char escape[8];
  snprintf(escape, sizeof escape, "\\u%04x", c);
  *out += escape;
}

void AppendTsvField(const char* text, size_t length, std::string* out) {
  for (size_t i = 0; i < length; ++i) {
    switch (text[i]) {
      case '\\': *out += "\\\\"; break;
      case '\t': *out += "\\t"; break;
      case '\n': *out += "\\n"; break;
      case '\r': *out += "\\r"; break;
      default: *out += text[i];
    }
  }
}

// Where each record lies in its line: bytes and characters. The records
// tile the piece, so one pass over them counts the characters.
class Offsets {
 public:
  Offsets(const Piece& piece, const Formatter& formatter)
      : piece_(piece), formatter_(formatter), chars_(piece.charStart) {}

  // Moves to record r; its start and end then read as below.
  void Next(const result_t& r) {
    Advance(static_cast<size_t>(r.start));
    start_ = chars_;
    Advance(static_cast<size_t>(r.start + r.length));
  }
  size_t start() const { return start_; }
  size_t end() const { return chars_; }

 private:
  void Advance(size_t to) {
    if (to <= bytes_ || to > piece_.text.size()) return;
    chars_ += formatter_.Characters(piece_.text.data() + bytes_, to - bytes_);
    bytes_ = to;
  }

  const Piece& piece_;
  const Formatter& formatter_;
  size_t bytes_ = 0;  // within the piece
  size_t chars_;      // within the line
  size_t start_ = 0;
};

}  // namespace

size_t Formatter::Characters(const char* text, size_t length) const {
  size_t count = 0;
  for (size_t pos = 0; pos < length; ++count) {
    pos += static_cast<size_t>(ScanChar(layout_, text + pos, length - pos).len);
  }
  return count;
}

bool Formatter::Append(const Piece& piece, std::string* out) const {
  if (format_ == Format::kText) {
    const char* result = ZIVOR_ParagraphProcess(piece.text.c_str(), tags_ ? 1 : 0);
    if (result == nullptr) return false;
    *out += result;
    if (piece.lineEnd) *out += '\n';
    return true;
  }
  int count = 0;
  const result_t* records = ZIVOR_ParagraphProcessA(piece.text.c_str(), &count, true);
  if (records == nullptr) return false;
  switch (format_) {
    case Format::kRecords: AppendRecords(piece, records, count, out); break;
    case Format::kJson: AppendJson(piece, records, count, out); break;
    case Format::kTsv: AppendTsv(piece, records, count, out); break;
    case Format::kText: break;
  }
  return true;
}

void Formatter::AppendRecords(const Piece& piece, const result_t* records, int count,
                              std::string* out) const {
  for (int i = 0; i < count; ++i) {
    const result_t& r = records[i];
    AppendNumber(piece.byteStart + static_cast<size_t>(r.start), out);
    *out += '\t' + std::to_string(r.length) + '\t' + Tag(r) + '\t' + std::to_string(r.word_ID) +
            '\t' + std::to_string(r.word_type) + '\t';
    AppendWeight(r.weight, out);
    *out += '\n';
  }
  if (piece.lineEnd) *out += '\n';
}

void Formatter::AppendJson(const Piece& piece, const result_t* records, int count,
                           std::string* out) const {
  // A later piece of a line goes on with the tokens of the earlier ones,
  // which are never empty: the records of a text tile it.
  *out += piece.byteStart == 0 ? "{\"tokens\":[" : ",";
  Offsets offsets(piece, *this);
  for (int i = 0; i < count; ++i) {
    const result_t& r = records[i];
    offsets.Next(r);
    if (i > 0) *out += ',';
    *out += "{\"word\":";
    AppendJsonString(piece.text.data() + r.start, static_cast<size_t>(r.length), out);
    *out += ",\"tag\":";
    const std::string tag = Tag(r);
    AppendJsonString(tag.data(), tag.size(), out);
    *out += ",\"start\":" + std::to_string(offsets.start()) + ",\"end\":" +
            std::to_string(offsets.end()) + ",\"byte_start\":";
    AppendNumber(piece.byteStart + static_cast<size_t>(r.start), out);
    *out += ",\"byte_end\":";
    AppendNumber(piece.byteStart + static_cast<size_t>(r.start + r.length), out);
    *out += ",\"weight\":";
    AppendWeight(r.weight, out);
    *out += '}';
  }
  if (piece.lineEnd) *out += "]}\n";
}

void Formatter::AppendTsv(const Piece& piece, const result_t* records, int count,
                          std::string* out) const {
  Offsets offsets(piece, *this);
  for (int i = 0; i < count; ++i) {
    const result_t& r = records[i];
    offsets.Next(r);
    AppendTsvField(piece.text.data() + r.start, static_cast<size_t>(r.length), out);
    const std::string tag = Tag(r);
    *out += '\t';
    AppendTsvField(tag.data(), tag.size(), out);
    *out += '\t' + std::to_string(offsets.start()) + '\t' + std::to_string(offsets.end()) + '\t';
    AppendNumber(piece.byteStart + static_cast<size_t>(r.start), out);
    *out += '\t';
    AppendNumber(piece.byteStart + static_cast<size_t>(r.start + r.length), out);
    *out += '\n';
  }
  if (piece.lineEnd) *out += '\n';
}

void Formatter::AppendJsonString(const char* text, size_t length, std::string* out) const {
  *out += '"';
  for (size_t pos = 0; pos < length;) {
    const ScannedChar c = ScanChar(layout_, text + pos, length - pos);
    const auto* bytes = reinterpret_cast<const unsigned char*>(text + pos);
    const size_t len = static_cast<size_t>(c.len);
    if (c.kind == ScannedChar::kAscii) {
      AppendJsonAscii(bytes[0], out);
    } else if (layout_ != TextLayout::kUtf8) {
      for (size_t i = 0; i < len; ++i) AppendJsonAscii(bytes[i], out);
    } else if (c.kind == ScannedChar::kMultiByte) {
      out->append(text + pos, len);
    } else {
      *out += "\\ufffd";
    }
    pos += len;
  }
  *out += '"';
}
