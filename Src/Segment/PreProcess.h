// PreProcess.h: atom segmentation and the word lattice of one sentence.
//
// CPreProcess cuts the front of a GBK text into atoms, the smallest units the
// segmenter combines: one Chinese character, or a run of digits, Latin
// letters, punctuation or numerals, a date or a time, each with a handle (the
// core dictionary's, or a pseudo-word class such as 未##数 for numbers). It
// stops after the atom that ends a sentence and returns where the rest of the
// text begins. FullSegment then expands the atoms into the word lattice: for
// every atom a row holding the atom and every core-dictionary word that
// starts at it and ends exactly on a later atom boundary.
//
// Grouping is driven by the character type table; the roles of the type
// values are named in CPreProcess::CharType. One instance serves one thread;
// the dictionary and type table it reads are shared and read-only.
#ifndef ZIVOR_SEGMENT_PREPROCESS_H_
#define ZIVOR_SEGMENT_PREPROCESS_H_

#include "Utility/Global.h"

class CCharset;
class CPDAT;
class CTrie;

class CPreProcess {
 public:
  // Character types with a fixed role in grouping (values of charset.type).
  enum CharType : int {
    kDelimiter = 1,          // delimiter; '"' and '\'' are quotation marks
    kSentenceEnd = 2,        // sentence-final punctuation
    kInnerDelimiter = 3,     // delimiter that may stand inside a digit or letter run
    kPunctuationRun = 4,     // punctuation that forms runs
    kDigit = 5,              // digit
    kNumberChar = 6,         // a character that is a number by itself
    kDigitKindA = 7,         // digits of a kind that never mixes with kDigitKindB
    kLetter = 8,             // Latin letter
    kNumeral = 9,            // numeral characters that open a numeral string
    kNumeralB = 10,
    kNumeralC = 11,
    kNumeralEnd = 12,        // ends a numeral string after kNumeralC
    kNumeralOpener = 13,     // numeral-string opener of the second kind
    kConnector = 15,         // connectors inside numeral strings
    kConnectorUnit = 16,     // connector that is also a day/clock unit
    kPrefixA = 17,           // number prefix merging with a following number
    kConnectorPair = 18,     // connector/unit followed by kConnectorPairEnd
    kConnectorPairEnd = 19,
    kPrefixB = 20,           // number prefix merging with a following number
    kDayUnit = 21,           // day and clock units
    kClockUnit = 22,
    kYearUnit = 23,          // year unit
    kYearCancel = 24,        // cancels a year unit before it
    kTimeUnit = 25,          // day/clock unit that kUnitCancel cancels
    kUnitCancel = 26,        // cancels a day unit before it
    kUnitCancelB = 27,       // cancels a kConnectorPair unit before it
    kWhiteSpace = 28,        // white space and line ends
    kDigitKindB = 29,
  };
  // Types of the sentence start and end atoms.
  static constexpr unsigned char kStartAtomType = 'x';
  static constexpr unsigned char kEndAtomType = 'y';
  // Type given to letter strings and numeral strings.
  static constexpr unsigned char kLetterStringType = 8;
  static constexpr unsigned char kNumeralStringType = 9;

  CPreProcess(CCharset* charset, CPDAT* coreDict, CTrie* userDict);
  virtual ~CPreProcess();
  CPreProcess(const CPreProcess&) = delete;
  CPreProcess& operator=(const CPreProcess&) = delete;

  // Cuts the front of text into the atoms of one sentence (with start and end
  // atoms) and returns a pointer to the first byte not consumed.
  const char* AtomSegment(const char* text);

  // Atom segmentation, then the word lattice of the sentence. Returns what
  // AtomSegment returned. With fewer than 3 atoms no lattice is built and the
  // previous one stays.
  const char* FullSegment(const char* text);

  // Whether a match of `length` bytes starting at atom `atomIndex` ends
  // exactly at the end of a later atom.
  bool IsValidPosition(int atomIndex, int length) const;

  void SetUserDict(CTrie* userDict) { m_pUserDict = userDict; }

  // The atoms and the lattice, for the segmenter and for tests.
  const word_t* Atoms() const { return m_pAtom; }
  int AtomCount() const { return m_nAtomSize; }
  word_t** WordGraph() const { return m_pWordGraph; }
  int GraphLength() const { return m_nGraphLength; }
  int* WordCounter() const { return m_pWordCounter; }

 private:
  struct CharAt;  // one character of the text being cut
  class Scanner;  // reads characters and their types

  void FreeGraph();
  void ResetAtoms(int capacity);
  // Grouping of one atom by the type of its first character; returns true
  // when the sentence ends after it.
  bool GroupAtom(const Scanner& scan, word_t* atom, int atomIndex, int* dquotes,
                 int* squotes);
  void ExtendDigitString(const Scanner& scan, word_t* atom, int firstType) const;
  void ExtendNumeralString(const Scanner& scan, word_t* atom, int firstType) const;
  void ExtendNumeralOpener(const Scanner& scan, word_t* atom) const;
  // Merges a number with a preceding prefix, or takes a following date, time
  // or year unit into it. Returns false when the atom was merged away.
  bool FollowUpNumber(const Scanner& scan, word_t* atom, int atomIndex);
  void CheckDictionary(const char* text, word_t* atom) const;
  void BuildRow(const char* text, int atomIndex);

  word_t* m_pAtom = nullptr;
  int m_nAtomSize = 0;
  word_t** m_pWordGraph = nullptr;
  int m_nGraphLength = 0;
  int* m_pWordCounter = nullptr;
  CCharset* m_pCharset;
  CPDAT* m_pCoreDict;
  CTrie* m_pUserDict;
  unsigned int* m_pVecCandidateHandle = nullptr;
  unsigned int* m_pVecCandidatePosition = nullptr;
  unsigned int m_nCadidateSize = 0;
};

#endif  // ZIVOR_SEGMENT_PREPROCESS_H_
