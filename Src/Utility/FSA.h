// FSA.h: the deterministic finite-state automaton that recognises person
// names from the name roles of consecutive words.
//
// The automaton reads role ids (0 .. M-1) as input symbols, starting in state
// 0. Accepting states carry the tag id to give a name that ends there. The
// transition table holds one row per state and one entry per input symbol;
// -1 means "no transition".
//
// MaxPR runs the automaton over the name roles of a tagged sentence and
// merges each accepted run of words into one person-name word.
//
// An automaton is written as text (Import), saved as a binary file and later
// only loaded. Lookups on a loaded automaton are const and lock-free.
//
// Binary layout (little-endian int32, no header): M, S, S accepting flags,
// S tag ids, then S rows of M target states.
#ifndef ZIVOR_UTILITY_FSA_H_
#define ZIVOR_UTILITY_FSA_H_

#include <memory>

struct word_t;

class CFSA {
 public:
  // One entry of the transition table.
  struct _transitive {
    int state_to;  // the next state, or -1 for no transition
  };

  CFSA();
  CFSA(const CFSA&) = delete;
  CFSA& operator=(const CFSA&) = delete;
  virtual ~CFSA();

  // Reads the binary automaton. False, keeping the previous automaton, when
  // the file cannot be opened, a size is negative, it declares inputs
  // without states or more than 2^26 transitions, it is not exactly as long
  // as its sizes say, an accepting flag is neither 0 nor 1, a state that
  // does not accept has a tag id other than 0, or a transition leads to a
  // state that does not exist.
  bool Load(const char* path);
  // Writes the binary automaton. False when the file cannot be written.
  bool Save(const char* path) const;
  // Builds the automaton from its text form (see Tools/README.md). False when
  // the file cannot be opened or its state or input count is missing or
  // unusable; the previous automaton is then kept.
  bool Import(const char* path);
  // Writes a readable dump: sizes, accepting states, then every transition.
  bool Export(const char* path) const;

  int GetStateCount() const { return m_nStateCount; }
  int GetInputSetSize() const { return m_nInputSetSize; }
  // Whether `state` exists and is accepting (flag 1).
  bool IsAccepted(int state) const;
  // The tag id of an existing state (meaningful for accepting ones), else 0.
  int GetAcceptedPosId(int state) const;
  // The state reached from `state` on `symbol`, or -1 when there is no such
  // transition; symbols outside 0 .. M-1 and unknown states give -1.
  int NextState(int state, int symbol) const;

  // Merges person names in words[0 .. *count - 1], reading each word's
  // POS_id as its role, and lowers *count by the number of words removed.
  //
  // From each start the automaton runs until it blocks; if it passed an
  // accepting state after two words or more, the words up to the last
  // accepting one become one word: a copy of the first with the last one's
  // `end`, `type` = the accepting state's tag and the given handle. Scanning
  // resumes after the merged run (words the failed continuation consumed
  // are read again). A run that blocks without such an acceptance leaves its
  // words alone and scanning resumes after the word that blocked it, which
  // is not tried again as the first word of a name. Symbols outside
  // 0 .. M-1 block. A run still going at the last word is not merged.
  // Returns 0.
  int MaxPR(word_t* words, int* count, int handle) const;

 private:
  using Row = std::unique_ptr<_transitive[]>;

  // Replaces the tables with S states and M inputs: nothing accepting, no
  // transitions.
  void Reset(int nStateCount, int nInputSetSize);
  // Takes over the tables of `other`, leaving it empty.
  void MoveFrom(CFSA& other);
  // Whether every flag is 0 or 1 and only accepting states have a tag id,
  // as Import leaves them.
  bool AcceptingStatesAreValid() const;

  int m_nStateCount;
  std::unique_ptr<int[]> m_pStateAccepted;
  std::unique_ptr<int[]> m_pPosIdAccepted;
  int m_nInputSetSize;
  // S rows of M + 1 entries. The text form admits input M itself (its range
  // test is inclusive); the spare last column absorbs such a transition. It is
  // neither saved nor followed.
  std::unique_ptr<Row[]> m_pTransData;
};

#endif  // ZIVOR_UTILITY_FSA_H_
