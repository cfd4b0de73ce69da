// FieldDictList.h: a field or granularity dictionary built from a plain word
// list.
//
// The field and granularity passes of the analysis (MainSystemField.cpp)
// read a pair of files: NAME.pdat, a dictionary of the words, and NAME.pos,
// their tags by the dictionary's handles, as ids of the primary tag map. A
// list that makes them has one entry a line, GBK (Read converts other
// encodings line by line): the word, then white space and its tag, a name of the tag map in any ASCII case (`心肌梗死 n`);
// a word without a tag is tagged n. Lines holding only white space are
// skipped. A line with more than two fields, an unknown tag, a word longer
// than kMaxWordBytes or holding a NUL byte, or bytes that are not GBK is an
// error. ASCII letters are folded, as the dictionary folds them, and the
// first line of a word wins: later ones are counted and left out.
//
// Both files are written by the library's own importers (CPDAT::Import,
// then CPOS::Import through the tag map), so they are what the library
// loads; the same list gives the same bytes.
#ifndef ZIVOR_TOOLS_FIELDDICT_FIELDDICTLIST_H_
#define ZIVOR_TOOLS_FIELDDICT_FIELDDICTLIST_H_

#include <functional>
#include <istream>
#include <set>
#include <string>
#include <vector>

class CPOSmap;

class FieldDictList {
 public:
  // Longest word, in bytes: the tag lexicon importer reads lines of up to
  // 1,023 bytes.
  static constexpr size_t kMaxWordBytes = 1000;
  // Turns a line of another encoding into GBK; false when it has no GBK
  // form.
  using Converter = std::function<bool(const std::string& line, std::string* gbk)>;

  // `tags` is the primary tag map; it must outlive the list.
  explicit FieldDictList(const CPOSmap& tags);

  // Adds one line (GBK, without its line end). False, with the reason in
  // *error, when the line is malformed.
  bool AddLine(const std::string& line, std::string* error);
  // Adds every line of `in`, converted by `convert` when given. False on the
  // first malformed line, with "NAME:LINE: reason" in *error.
  bool Read(std::istream& in, const std::string& name, std::string* error,
            const Converter& convert = nullptr);

  // Writes `stem`.pdat and `stem`.pos, replacing whatever was there (a link
  // is replaced, never written through). An empty list gives a valid empty
  // dictionary. False, with the reason in *error, on failure.
  bool Write(const std::string& stem, std::string* error) const;

  // Words kept, and lines left out because their word came earlier.
  size_t size() const { return entries_.size(); }
  size_t repeated() const { return repeated_; }

 private:
  struct Entry {
    std::string word;
    unsigned char tag;
  };

  bool WriteDictionary(const std::string& path, std::string* error) const;
  bool WriteLexicon(const std::string& dict_path, const std::string& path,
                    std::string* error) const;

  const CPOSmap& tags_;
  std::vector<Entry> entries_;    // in list order: handle i + 1 for the i-th
  std::set<std::string> folded_;  // the words kept, folded
  size_t repeated_ = 0;
};

#endif  // ZIVOR_TOOLS_FIELDDICT_FIELDDICTLIST_H_
