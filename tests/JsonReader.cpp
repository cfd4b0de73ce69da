#include "JsonReader.h"

#include <cstdlib>
#include <cstring>

#include "Utility/CharScan.h"

namespace testutil {

namespace {

void AppendUtf8(uint32_t code, std::string* out) {
  if (code < 0x80) {
    *out += static_cast<char>(code);
  } else if (code < 0x800) {
    *out += static_cast<char>(0xC0 | (code >> 6));
    *out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    *out += static_cast<char>(0xE0 | (code >> 12));
    *out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    *out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    *out += static_cast<char>(0xF0 | (code >> 18));
    *out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    *out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    *out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

class Parser {
 public:
  explicit Parser(const std::string& text) : s_(text) {}

  bool Document(JsonValue* value, std::string* error) {
    const bool ok = Value(value) && (Space(), pos_ == s_.size());
    if (!ok) *error = "not JSON at byte " + std::to_string(pos_);
    return ok;
  }

 private:
  void Space() {
    while (pos_ < s_.size() && strchr(" \t\r\n", s_[pos_]) != nullptr) ++pos_;
  }
  bool Take(char c) {
    Space();
    if (pos_ >= s_.size() || s_[pos_] != c) return false;
    ++pos_;
    return true;
  }
  bool Word(const char* word) {
    const size_t n = strlen(word);
    if (s_.compare(pos_, n, word) != 0) return false;
    pos_ += n;
    return true;
  }

  bool Value(JsonValue* v) {
    Space();
    if (pos_ >= s_.size()) return false;
    switch (s_[pos_]) {
      case '{': return Object(v);
      case '[': return Array(v);
      case '"': v->kind = JsonValue::kString; return String(&v->text);
      case 't': v->kind = JsonValue::kBool; v->boolean = true; return Word("true");
      case 'f': v->kind = JsonValue::kBool; return Word("false");
      case 'n': v->kind = JsonValue::kNull; return Word("null");
      default: v->kind = JsonValue::kNumber; return Number(&v->number);
    }
  }

  bool Object(JsonValue* v) {
    v->kind = JsonValue::kObject;
    ++pos_;
    if (Take('}')) return true;
    do {
      std::pair<std::string, JsonValue> member;
      Space();
      if (pos_ >= s_.size() || s_[pos_] != '"' || !String(&member.first) || !Take(':') ||
          !Value(&member.second)) {
        return false;
      }
      v->members.push_back(std::move(member));
    } while (Take(','));
    return Take('}');
  }

  bool Array(JsonValue* v) {
    v->kind = JsonValue::kArray;
    ++pos_;
    if (Take(']')) return true;
    do {
      v->items.emplace_back();
      if (!Value(&v->items.back())) return false;
    } while (Take(','));
    return Take(']');
  }

  bool Number(double* number) {
    // -?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?
    const size_t start = pos_;
    const auto digits = [&] {
      const size_t from = pos_;
      while (pos_ < s_.size() && s_[pos_] >= '0' && s_[pos_] <= '9') ++pos_;
      return pos_ > from;
    };
    if (pos_ < s_.size() && s_[pos_] == '-') ++pos_;
    if (pos_ < s_.size() && s_[pos_] == '0') {
      ++pos_;
    } else if (!digits()) {
      return false;
    }
    if (pos_ < s_.size() && s_[pos_] == '.' && (++pos_, !digits())) return false;
    if (pos_ < s_.size() && (s_[pos_] == 'e' || s_[pos_] == 'E')) {
      ++pos_;
      if (pos_ < s_.size() && (s_[pos_] == '+' || s_[pos_] == '-')) ++pos_;
      if (!digits()) return false;
    }
    *number = strtod(s_.substr(start, pos_ - start).c_str(), nullptr);
    return true;
  }

  bool Hex4(uint32_t* code) {
    if (pos_ + 4 > s_.size()) return false;
    char* end = nullptr;
    const std::string hex = s_.substr(pos_, 4);
    *code = static_cast<uint32_t>(strtoul(hex.c_str(), &end, 16));
    pos_ += 4;
    return end == hex.c_str() + 4;
  }

  bool Escape(std::string* out) {
    const char c = s_[pos_++];
    const char* simple = strchr("\"\\/bfnrt", c);
    if (c != '\0' && simple != nullptr) {
      *out += "\"\\/\b\f\n\r\t"[simple - "\"\\/bfnrt"];
      return true;
    }
    uint32_t code = 0;
    if (c != 'u' || !Hex4(&code)) return false;
    if (code >= 0xD800 && code < 0xDC00) {  // a surrogate pair
      uint32_t low = 0;
      if (!Word("\\u") || !Hex4(&low) || low < 0xDC00 || low > 0xDFFF) return false;
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    } else if (code >= 0xDC00 && code < 0xE000) {
      return false;
    }
    AppendUtf8(code, out);
    return true;
  }

  bool String(std::string* out) {
    ++pos_;  // the opening quote
    while (pos_ < s_.size()) {
      const unsigned char c = static_cast<unsigned char>(s_[pos_]);
      if (c == '"') {
        ++pos_;
        return true;
      }
      if (c < 0x20) return false;
      if (c == '\\') {
        ++pos_;
        if (pos_ >= s_.size() || !Escape(out)) return false;
        continue;
      }
      const ScannedChar scanned = ScanChar(TextLayout::kUtf8, s_.data() + pos_, s_.size() - pos_);
      if (scanned.kind == ScannedChar::kMalformed) return false;
      out->append(s_, pos_, static_cast<size_t>(scanned.len));
      pos_ += static_cast<size_t>(scanned.len);
    }
    return false;
  }

  const std::string& s_;
  size_t pos_ = 0;
};

}  // namespace

const JsonValue& JsonValue::operator[](const std::string& name) const {
  static const JsonValue kNone;
  for (const auto& member : members) {
    if (member.first == name) return member.second;
  }
  return kNone;
}

bool ParseJson(const std::string& text, JsonValue* value, std::string* error) {
  *value = JsonValue();
  return Parser(text).Document(value, error);
}

bool Latin1Bytes(const std::string& utf8, std::string* bytes) {
  bytes->clear();
  for (size_t pos = 0; pos < utf8.size();) {
    const ScannedChar c = ScanChar(TextLayout::kUtf8, utf8.data() + pos, utf8.size() - pos);
    if (c.kind == ScannedChar::kMalformed || c.code > 0xFF) return false;
    *bytes += static_cast<char>(c.code);
    pos += static_cast<size_t>(c.len);
  }
  return true;
}

}  // namespace testutil
