// KeyWordFinder.h: keyword and new-word candidates gathered from analyses.
//
// CKeyWordFinder is fed analysis results (result_t arrays over GBK texts) and
// turns every token into a candidate: one _tWordAV per distinct (normalised)
// word string, with its occurrence count, the positions where it starts in
// the finder's token sequence, and counted lists of the candidates seen
// immediately left and right of it. Keyword scoring, new-word merging and the
// document fingerprint work on these records only. GenerateNewWordList merges
// adjacent candidates that occur together often into new candidates.
// ComputeKeyWord scores, filters and ranks a candidate list in place; the
// keyword and new-word lists are handed out as text or as the vector itself,
// and FingerPrint hashes the words at the top of a ranked list.
//
// Normalisation and weights consult the word statistics the finder is given
// for dictionary membership and unigram probabilities; without them, every
// string counts as unknown with probability 0. Text boundaries and blanks become the
// sentence-end marker candidate, which is a stop word.
//
// A candidate's index in the candidate list is its identifier. Strings are
// mapped to identifiers through a CTrie whose entry numbers are translated by
// an explicit table, so the lookup stays right even when the trie holds
// strings that never became candidates. The finder is not thread-safe.
#ifndef ZIVOR_UTILITY_KEYWORDFINDER_H_
#define ZIVOR_UTILITY_KEYWORDFINDER_H_

#include <memory>
#include <string>
#include <vector>

#include "zivor/ZIVORTypes.h"

class CTrie;
class CWordStats;
class CUnigram;

// One entry of a neighbour list: a candidate and how often it was seen there.
typedef struct _word_freq {
  int handle;  // index of the neighbouring candidate
  int freq;    // times seen on this side
} WORD_FREQ;

// One candidate.
typedef struct _tWordAV {
  // A fresh candidate with no occurrences; a stop word when the tag name
  // starts with one of "uwcpre" or the word starts with '<' or '>'.
  _tWordAV(const std::string& sWord, const std::string& sPos, int nPosId);

  std::string word;                 // GBK text (merged words: the parts joined)
  std::string pos;                  // tag name of the first occurrence
  int pos_id;                       // tag identifier of the first occurrence
  int freq = 0;                     // occurrences
  double weight = 0.0;              // score; -p ln p after scanning
  std::vector<int> vecInvertList;   // ascending positions where it starts
  bool is_stopword;                 // never scored or merged, no neighbours
  bool is_freq_bigram = false;      // merged words only: parts a frequent pair
  std::vector<_word_freq> vecLV;    // left neighbours, ascending handle
  std::vector<_word_freq> vecRV;    // right neighbours, ascending handle
  int unit_count = 1;               // scanned tokens spanned

  // The ranking order: strictly greater weight first, no second key.
  bool operator<(const _tWordAV& other) const { return weight > other.weight; }
} WORD_AV;

// Bisects the list (ascending by handle). Returns 1 with nMid the entry's
// index on a hit; 0 with nMid the insertion point on a miss.
int Find(int nHandle, std::vector<_word_freq>& vecList, int& nMid);
// Counts one more sighting of nHandle in the list (inserting it with count 1
// when new) and returns its index.
int Add(int nHandle, std::vector<_word_freq>& vecList);

class CKeyWordFinder {
 public:
  // The sentence-end marker that stands for boundaries, blanks and overlong
  // tokens (GBK "末##末").
  static const char kMarker[];
  // Longest token kept as it is, in bytes; GetWord's buffer needs one more.
  static constexpr int kMaxTokenLen = 30;
  // Scan refuses to grow the position list beyond this many positions.
  static constexpr size_t kMaxPositions = 30000000;
  // A known word at least this frequent may be a stop word.
  static constexpr int kStopWordFreq = 840;
  // A new word spans at most this many scanned tokens.
  static constexpr int kMaxUnits = 7;

  // The unigram table judges stop words and rare words by their counts, the
  // word statistics dictionary membership, probabilities and associated
  // pairs (both not owned; null: every word unknown).
  CKeyWordFinder(CUnigram* pUnigram, const CWordStats* pStats);
  ~CKeyWordFinder();
  CKeyWordFinder(const CKeyWordFinder&) = delete;
  CKeyWordFinder& operator=(const CKeyWordFinder&) = delete;

  // Drops all candidates and new words. Positions go on counting from where
  // they were (towards the cap), but the identifiers at the old ones, which
  // would mean nothing afterwards, are released.
  void Reset();

  // Adds the nCount tokens of one analysed text. 1 on success, 0 on bad
  // arguments (nothing changes), -1 (logged) when the position list already
  // holds more than kMaxPositions entries.
  int Scan(const char* sLine, int nCount, const result_t* result);

  // Normalises token i into sWord (at least kMaxTokenLen + 1 bytes), makes it
  // a candidate if needed, counts the occurrence and returns the identifier,
  // also stored in nCurHandle.
  int GetWord(const char* sLine, int nCount, const result_t* result, int i, char* sWord,
              int& nCurHandle);

  // New-word merging: pairs of adjacent candidates seen together often
  // become candidates of their own (tag "n_new"), which may merge again, up
  // to kMaxUnits scanned tokens. Returns the number of new words.
  int GenerateNewWordList();
  // Merges candidate nPrev followed by nNext, seen together nFreq times,
  // unless a rule refuses the pair. A joined string refused once it has
  // positions to check is never proposed again. Always 0.
  int SetNewWord(int nPrev, int nNext, int nFreq);
  // Appends every x of vecPrevList (ascending) with x + nDist in vecNextList
  // (ascending) to vecIntersectList; returns its size.
  int Intersection(const std::vector<int>& vecPrevList, const std::vector<int>& vecNextList,
                   int nDist, std::vector<int>& vecIntersectList) const;

  // Scores, filters and sorts the list in place (always 1): weights grow by
  // the entropy of the neighbours and are scaled by span, length and tag;
  // weak, contained and low-weight records are erased. Scoring a list twice
  // adds the entropy again and re-applies every factor.
  int ComputeKeyWord(std::vector<_tWordAV>& vecWordAV, bool bNewWordExtract);
  // Ranking the candidates (keywords) reorders and erases them: afterwards
  // identifiers, neighbour handles and string lookups mean nothing, so Scan
  // and GenerateNewWordList refuse to run (0) until the next Reset.
  // The ranked candidates (keywords) or new words, as text of at most
  // nMaxLim + 1 entries (-1: all), valid until the next call on the finder.
  const char* GetKeyWordList(bool bArgumentOutput, int nMaxLim);
  const char* GetNewWordList(bool bArgumentOutput, int nMaxLim);
  // The same rankings, as the finder's own lists.
  std::vector<_tWordAV>* GetKeyWordListE();
  std::vector<_tWordAV>* GetNewWordListE();
  // Formats entries 0..nMaxLim (nMaxLim read unsigned; -1: all) as the word,
  // with bArgumentOutput "/tag/weight" (two decimals), then two spaces.
  const char* GenerateResultString(bool bArgumentOutput, int nMaxLim,
                                   std::vector<_tWordAV>& vecWordAV);
  // Whether the word of record nCurIndex lies inside the word of an earlier
  // record.
  bool IsExist(std::vector<_tWordAV>& vecWord, int nCurIndex) const;
  // Strhash of the first six words joined (at most 199 bytes); 0 when empty.
  unsigned long FingerPrint(std::vector<_tWordAV>& vecWordAV) const;

  // Development aid: writes every record of vecList with its counts,
  // positions and neighbours (named from vecWordAV) to a text file. False
  // (and a line on standard output) when the file cannot be written.
  bool Export(std::vector<_tWordAV>& vecList, const char* sFilename,
              std::vector<_tWordAV>& vecWordAV) const;

  // Identifier of the candidate with this string, or -1.
  int GetWordIndex(const char* sWord) const;

  const std::vector<_tWordAV>& GetWordAV() const { return m_vecWordAV; }
  // Identifiers at the positions since the last Reset, which start at
  // GetFirstPosition(); GetPositionCount() counts all since construction.
  const std::vector<int>& GetWordIDList() const { return m_vecWordIDList; }
  size_t GetFirstPosition() const { return m_nFirstPosition; }
  size_t GetPositionCount() const { return m_nFirstPosition + m_vecWordIDList.size(); }
  const std::vector<_tWordAV>& GetNewWordInfo() const { return m_vecNewWordInfo; }

 private:
  // Identifier of the marker candidate, registering it (stop word, empty
  // tag, tag identifier 1) when absent.
  int MarkerHandle();
  // Appends a candidate for a string that has none; -1 when the trie cannot
  // hold the string (it contains white space).
  int AddCandidate(_tWordAV&& candidate);
  // The candidate for the token r normalised to sWord, as a new record.
  _tWordAV NewCandidate(const char* sWord, const result_t& r, bool bClassToken) const;
  // Whether a known, frequent token is too common to be a candidate.
  bool IsFrequentStopWord(const char* sWord, const result_t& r) const;
  // Whether candidate i may start merges (GenerateNewWordList's seed test).
  bool IsSeed(const _tWordAV& candidate) const;
  // Whether the neighbour entry of the seed may merge with it.
  bool IsPartner(const _tWordAV& seed, const _word_freq& neighbour) const;
  // Whether the tags of the parts or their commonness forbid the pair.
  bool IsRefusedPair(const _tWordAV& left, const _tWordAV& right) const;
  // Whether the word is more frequent than a rare word may be.
  bool IsCommon(const std::string& word) const;
  // The merged record of left and right with its neighbours, no positions
  // meaning none in common.
  _tWordAV NewWord(const _tWordAV& left, const _tWordAV& right, int nFreq) const;
  // Counts the neighbours of a new word starting at the positions.
  void AddNewWordNeighbours(_tWordAV& word) const;
  // Stage one of ComputeKeyWord for one record.
  void Score(_tWordAV& r, bool bNewWordExtract) const;
  // Stage three: erases weak records and damps repeated tag groups.
  void Filter(std::vector<_tWordAV>& vecWordAV) const;
  // Whether the list's record at nIndex, the first not yet filtered, with
  // nRemaining records after it, is dropped by the filter.
  bool IsFilteredOut(std::vector<_tWordAV>& vecWordAV, size_t nIndex, size_t nRemaining) const;
  // Whether a position belongs to the current collection (after Reset).
  bool IsCurrent(int position) const {
    return position >= 0 && static_cast<size_t>(position) >= m_nFirstPosition;
  }
  // The identifier at a current position.
  int IdAt(int position) const { return m_vecWordIDList[position - m_nFirstPosition]; }

  std::vector<_tWordAV> m_vecWordAV;        // all candidates, by identifier
  std::unique_ptr<CTrie> m_trie;            // candidate string -> entry number
  std::vector<int> m_vecWordIDList;         // scanned identifiers since the last Reset
  std::string m_sLine;                      // buffer of result strings
  std::vector<_tWordAV> m_vecNewWordInfo;   // new words found
  CUnigram* m_pUnigram;                     // not owned
  const CWordStats* m_pStats;               // not owned, may be null
  std::vector<int> m_vecEntryIndex;         // trie entry number -> identifier or -1
  size_t m_nFirstPosition = 0;              // positions scanned before the last Reset
  bool m_bRanked = false;                   // candidates ranked since the last Reset
};

#endif  // ZIVOR_UTILITY_KEYWORDFINDER_H_
