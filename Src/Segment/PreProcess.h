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
// Grouping is driven by the character type table (charset.type); the roles
// of the type values are named in CPreProcess::CharType, and
// Data/source/charset.txt explains which characters carry them.
//
// Any byte string is safe input: a lone lead byte at the end is a
// one-character atom, NUL ends the text, and a sentence is closed after
// kMaxSentenceBytes so that one call never needs more memory than that bounds.
// One instance serves one thread; the dictionary and the type table it reads
// are shared and read-only.
#ifndef ZIVOR_SEGMENT_PREPROCESS_H_
#define ZIVOR_SEGMENT_PREPROCESS_H_

#include <vector>

#include "Utility/Global.h"
#include "Utility/PDAT.h"

class CCharset;
class CTrie;

class CPreProcess {
 public:
  // Character types with a fixed role in grouping (values of charset.type).
  enum CharType : int {
    kDelimiter = 1,          // delimiter; '"' and '\'' are quotation marks
    kSentenceEnd = 2,        // sentence-final punctuation
    kInnerDelimiter = 3,     // delimiter that stays inside digit and letter runs
    kPunctuationRun = 4,     // punctuation that forms runs (also inside digit runs)
    kDigit = 5,              // digit that joins both kinds below
    kNumberChar = 6,         // a character that is a number by itself
    kDigitKindA = 7,         // digits that never share an atom with kDigitKindB
    kLetter = 8,             // Latin letter
    kNumeral = 9,            // numerals that open a numeral string
    kNumeralB = 10,          //   ... and may also follow digits
    kNumeralC = 11,          //   ... unless kNumeralEnd comes next
    kNumeralEnd = 12,        // ends a numeral string after kNumeralC
    kNumeralOpener = 13,     // numeral-string opener of the second kind
    kConnector = 15,         // connector that takes the character after it
    kConnectorUnit = 16,     // connector inside numerals, clock unit after numbers
    kPrefixA = 17,           // number prefix merging with a following number
    kConnectorPair = 18,     // connector when kConnectorPairEnd follows; a unit
    kConnectorPairEnd = 19,
    kPrefixB = 20,           // number prefix merging with a following number
    kDayUnit = 21,           // day and clock units
    kClockUnit = 22,
    kYearUnit = 23,          // year unit
    kYearCancel = 24,        // after a year unit: the number is not a year
    kTimeUnit = 25,          // day unit that kUnitCancel cancels
    kUnitCancel = 26,        // cancels a kTimeUnit or kConnectorPair unit before it
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
  // A sentence is closed when it reaches this many bytes, at a character
  // boundary; the rest of the text is left for the next call.
  static constexpr int kMaxSentenceBytes = 1 << 16;

  CPreProcess(CCharset* charset, CPDAT* coreDict, CTrie* userDict);
  virtual ~CPreProcess();
  CPreProcess(const CPreProcess&) = delete;
  CPreProcess& operator=(const CPreProcess&) = delete;

  // Cuts the front of the NUL-terminated text into the atoms of one sentence
  // (with start and end atoms) and returns a pointer to the first byte not
  // consumed. A null text is read as an empty one.
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

  // Makes room for `count` atoms; false when memory runs out.
  bool ReserveAtoms(int count);
  void FreeGraph();
  // Grouping of one atom by the type of its first character c; returns true
  // when the sentence ends after it.
  bool GroupAtom(const Scanner& scan, const CharAt& c, word_t* atom, int atomIndex, int* dquotes,
                 int* squotes) const;
  void GroupDelimiter(const CharAt& c, word_t* atom, int* dquotes, int* squotes) const;
  void ExtendDigitString(const Scanner& scan, word_t* atom, int firstType) const;
  void ExtendNumeralString(const Scanner& scan, word_t* atom, int firstType) const;
  void ExtendNumeralOpener(const Scanner& scan, word_t* atom) const;
  // Merges a number with a preceding prefix, or takes a following date, time
  // or year unit into it. Returns false when the atom was merged away.
  bool FollowUpNumber(const Scanner& scan, word_t* atom, int atomIndex);
  void TakeUnit(const Scanner& scan, word_t* atom) const;
  void CheckDictionary(const char* text, word_t* atom) const;
  // Whether an atom's row holds the atom alone.
  bool HasSingleRow(const word_t& atom) const;
  // Whether the dictionary is asked for the words that start at the atom.
  bool LooksUpWords(int atomIndex) const;
  // Looks up the dictionary words that start at every atom that asks for
  // them, all atoms together (CPDAT::GetWordsOfAll), before the rows are
  // built: m_dictWords, grouped by atom.
  void FindDictionaryWords(const char* text);
  // Empties the lattice and sizes its row table for `length` rows; false
  // when memory runs out.
  bool ResetGraph(int length);
  // The lattice row of an atom: the atom, then the words that start at it.
  // The words go to the end of the arena, so rows are built in atom order;
  // LinkRows points the row table at them once all are there. Throws
  // std::bad_alloc when memory runs out.
  void BuildRow(int atomIndex);
  // Adds the atom's dictionary words that end at an atom's end.
  void AddDictionaryWords(int atomIndex);
  // Appends a word of `length` bytes starting at the atom to the row being
  // built.
  void AddWord(const word_t& atom, int handle, int length);
  void LinkRows();
  int RowOf(int atomIndex) const { return atomIndex == 0 ? 0 : m_pAtom[atomIndex].start + 1; }
  int FindCode(int code) const;

  word_t* m_pAtom = nullptr;
  int m_nAtomSize = 0;
  // Row table and word counts of the lattice (m_nGraphLength rows used of
  // m_nGraphCapacity); the rows point into m_vecLattice, an arena that is
  // kept across sentences, so a sentence allocates nothing once the
  // buffers are large enough.
  word_t** m_pWordGraph = nullptr;
  int m_nGraphLength = 0;
  int* m_pWordCounter = nullptr;
  int m_nGraphCapacity = 0;
  std::vector<word_t> m_vecLattice;
  // The dictionary words of the sentence's atoms (FindDictionaryWords):
  // those of atom i are m_dictWords[m_dictFirst[i] .. m_dictFirst[i + 1]).
  std::vector<CPDAT::PrefixWord> m_dictWords;
  std::vector<int> m_dictFirst;
  // FindDictionaryWords's scratch, kept between sentences.
  std::vector<const char*> m_walkStrings;
  std::vector<int> m_walkMinLens;
  std::vector<CPDAT::PrefixWord> m_walkFound;
  CCharset* m_pCharset;
  CPDAT* m_pCoreDict;
  CTrie* m_pUserDict;
  unsigned int* m_pVecCandidateHandle = nullptr;
  unsigned int* m_pVecCandidatePosition = nullptr;
  unsigned int m_nCadidateSize = 0;
  // Entries allocated in m_pAtom; the array is kept across calls and grows
  // with realloc as a sentence needs, so a call costs what its sentence costs
  // however much text follows.
  int m_nAtomCapacity = 0;
};

#endif  // ZIVOR_SEGMENT_PREPROCESS_H_
