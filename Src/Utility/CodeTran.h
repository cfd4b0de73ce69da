// CodeTran.h: conversion between the caller's encoding and the GBK that the
// analysis works in.
//
// CCodeTran translates with tables rather than with a character-set library.
// For each direction a double-array dictionary of the source encoding's
// strings (byte mode) cuts the text by longest match, and every match is
// replaced, through an ID map and a word list, by its counterpart in the
// target encoding. The tables hold strings of any length, so a conversion
// can replace whole phrases, not only characters: traditional text is
// turned into the simplified forms the analysis was trained on.
//
// Encodings (the codes callers pass to initialisation):
//   1 UTF-8  tables GBKA.pdat GBKA.wordlist UTF8.pdat UTF8.wordlist
//            UTF2GBKA.map GBKA2UTF.map
//   2 BIG5   tables GBK.pdat GBK.wordlist BIG5.pdat BIG5.wordlist
//            BIG2GBK.map GBK2BIG.map
//   3 GBKC   (GBK bytes written with traditional characters) tables
//            GBK.pdat GBK.wordlist GBKC.pdat GBKC.wordlist GBKC2GBK.map
//            GBK2GBKC.map
// Any other code loads nothing: its text is taken as GBK.
//
// Two families of conversion:
// - GBKToCode and CodeToGBK (and their file variants) convert a text line by
//   line: each line restarts after its leading blanks, so indentation and
//   blank lines are dropped and CR LF comes out as CR; strings no table knows
//   pass through unchanged.
// - ToGBK and FromGBK keep every character. ToGBK also records, for every GBK
//   byte, where its character came from in the caller's text, so that the
//   analysis results can be cut from the caller's own bytes. A character that
//   GBK lacks, and any malformed byte sequence, becomes exactly one stand-in
//   GBK character (kStandInSymbol, kStandInLetter or kStandInHan), so it can
//   never pair up with the bytes around it. The analysis uses this family.
//
// A translator is loaded once and only read afterwards: any number of
// threads may convert with one translator at once.
#ifndef ZIVOR_UTILITY_CODETRAN_H_
#define ZIVOR_UTILITY_CODETRAN_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Utility/CharScan.h"

class CIDMaps;
class CPDAT;
class CWordList;

class CCodeTran {
 public:
  enum Encoding { kUTF8 = 1, kBIG5 = 2, kGBKC = 3 };

  // The GBK codes that stand for characters GBK lacks. They lie in GBK's
  // user-defined area, which no table maps, and the character type table
  // gives them the types of a symbol, a Latin letter and a Chinese character.
  static constexpr char kStandInSymbol[] = "\xAF\xFC";
  static constexpr char kStandInLetter[] = "\xAF\xFD";
  static constexpr char kStandInHan[] = "\xAF\xFE";

  // Loads the six tables of `encoding` (1 to 3) from the directory
  // sDataPath. A table that fails to load is logged as its full path and
  // " cannot load!" and stays empty. Other encodings load nothing.
  CCodeTran(const char* sDataPath, int encoding);
  ~CCodeTran();
  CCodeTran(const CCodeTran&) = delete;
  CCodeTran& operator=(const CCodeTran&) = delete;

  // Line-by-line conversions; the result is held in `result`, whose buffer
  // is returned. A UTF-8 byte-order mark at the start is skipped.
  const char* GBKToCode(const char* sLine, std::string& result) const;
  const char* CodeToGBK(const char* sLine, std::string& result) const;
  const char* CodeTrans(const char* sLine, std::string& result, CPDAT* pSrcDict,
                        CIDMaps* pIDMaps, CWordList* pDsnWordList) const;
  // Whole files; false when the source cannot be read or the destination
  // written. GBKToCodeFile starts a UTF-8 file with a byte-order mark.
  bool GBKToCodeFile(const char* sSrcFile, const char* sDsnFile) const;
  bool CodeToGBKFile(const char* sSrcFile, const char* sDsnFile) const;

  // Converts `len` bytes of caller text to GBK into *gbk, keeping every
  // character. *offsets receives gbk->size() + 1 entries: entry i is the
  // offset in `text` of the character that GBK byte i belongs to, and the
  // last entry is `len`. So GBK bytes [a, b) came from text bytes
  // [offsets[a], offsets[b]) whenever a and b are character boundaries. A
  // UTF-8 byte-order mark at the start is skipped (the first offset is 3).
  // False, with both outputs empty, when the text is too long to index with
  // int offsets.
  bool ToGBK(const char* text, size_t len, std::string* gbk, std::vector<int>* offsets) const;
  // Appends `len` bytes of GBK text, converted to the caller's encoding, to
  // *out. A character the encoding lacks comes out as U+FFFD in UTF-8 and as
  // '?' in BIG5; in the GBK-based encodings unmapped characters stay as they
  // are.
  void FromGBK(const char* gbk, size_t len, std::string* out) const;
  std::string FromGBK(const std::string& gbk) const;

  int GetEncoding() const { return m_nEncoding; }
  // The names of the six table files of `encoding` (none outside 1 to 3).
  static std::vector<std::string> TableFileNames(int encoding);
  // The byte layout of the caller's text.
  TextLayout Layout() const;

 private:
  // The conversion of every character of one direction by its code (a
  // Unicode code point below 0x10000, or a double-byte code), and which
  // characters begin a longer string that converts as a whole. Derived from
  // the tables at load, so that most characters need no dictionary walk.
  struct CharMap {
    static constexpr uint32_t kKeys = 0x10000;
    std::vector<const char*> single;  // into the target word list; null: none
    std::vector<bool> phraseStart;
    // A character that starts no phrase and converts to exactly two bytes:
    // those bytes, first << 8 | second; 0 for any other character. The
    // common case in one small read.
    std::vector<uint16_t> twoBytes;
  };
  static void BuildCharMap(const CWordList* pSrcWords, TextLayout layout, const CIDMaps* pMap,
                           const CWordList* pDsnWords, CharMap* pCharMap);
  // The conversion of the string at `text` (`len` bytes left), whose first
  // character is c: the longest string the tables convert, or c alone.
  // *pMatched receives the bytes it covers; null when nothing converts.
  static const char* Lookup(const CharMap& charMap, const CPDAT* pDict, const CIDMaps* pMap,
                            const CWordList* pDsnWords, const char* text, size_t len,
                            const ScannedChar& c, int* pMatched);
  bool ConvertFile(const char* sSrcFile, const char* sDsnFile, bool bToCode) const;
  // The string the first target of `handle` maps to, or null.
  static const char* Target(const CIDMaps* pMap, const CWordList* pWords, int handle);
  // The GBK character that stands for the caller's character c, which no
  // table maps: a stand-in, or a blank for white space.
  const char* StandInFor(const ScannedChar& c) const;
  // Whether c, which no table maps, belongs to the character before it (a
  // combining mark, or any character after a zero-width joiner).
  bool ExtendsPrevious(const ScannedChar& c, bool joinNext) const;
  // Appends a table match: the caller's bytes [pos, pos + len) turned into
  // the GBK string `target`, character by character when both have the same
  // number of characters.
  void AppendMatch(const char* text, size_t pos, size_t len, const char* target,
                   std::string* gbk, std::vector<int>* offsets) const;
  // Whether unmapped GBK characters are the caller's own (encodings 3, 4).
  bool IsGBKBased() const;

  std::unique_ptr<CPDAT> m_pGBKSrcDict;
  std::unique_ptr<CWordList> m_pGBKWordList;
  std::unique_ptr<CPDAT> m_pCodeDict;
  std::unique_ptr<CWordList> m_pCodeWordList;
  std::unique_ptr<CIDMaps> m_pCode2GBKMap;
  std::unique_ptr<CIDMaps> m_pGBK2CodeMap;
  int m_nEncoding;
  CharMap m_toGBK;
  CharMap m_fromGBK;
};

#endif  // ZIVOR_UTILITY_CODETRAN_H_
