// JsonReader.h: a strict reader of JSON text for the tests of the command's
// JSON output. It accepts exactly RFC 8259 JSON in UTF-8 (no trailing
// commas, no raw control characters, well-formed UTF-8, escapes only as
// the grammar has them) and keeps the values as a tree.
#ifndef ZIVOR_TESTS_JSONREADER_H_
#define ZIVOR_TESTS_JSONREADER_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace testutil {

struct JsonValue {
  enum Kind { kNull, kBool, kNumber, kString, kArray, kObject };
  Kind kind = kNull;
  bool boolean = false;
  double number = 0.0;
  std::string text;                                      // a string, as UTF-8
  std::vector<JsonValue> items;                          // an array
  std::vector<std::pair<std::string, JsonValue>> members;  // an object, in order

  // The member called `name`; a null value when there is none.
  const JsonValue& operator[](const std::string& name) const;
};

// Parses `text` as one JSON value (white space around it allowed). False,
// with the reason and its offset in *error, when it is not valid JSON.
bool ParseJson(const std::string& text, JsonValue* value, std::string* error);

// The code points of UTF-8 text below 256 as bytes (ISO-8859-1); false when
// a code point is higher.
bool Latin1Bytes(const std::string& utf8, std::string* bytes);

}  // namespace testutil

#endif  // ZIVOR_TESTS_JSONREADER_H_
