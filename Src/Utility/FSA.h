// FSA.h: the deterministic finite-state automaton that recognises person
// names from the name roles of consecutive words.
//
// The automaton reads role ids (0 .. M-1) as input symbols, starting in state
// 0. Accepting states carry the tag id to give a name that ends there. The
// transition table holds one row per state and one entry per input symbol;
// -1 means "no transition".
//
// An automaton is written as text (Import), saved as a binary file and later
// only loaded. Lookups on a loaded automaton are const and lock-free.
//
// Binary layout (little-endian int32, no header): M, S, S accepting flags,
// S tag ids, then S rows of M target states.
#ifndef ZIVOR_UTILITY_FSA_H_
#define ZIVOR_UTILITY_FSA_H_

#include <memory>

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

  // Reads the binary automaton. False when the file cannot be opened, or is
  // too short for the sizes in its header, or holds a transition to a state
  // that does not exist; the previous automaton is then kept.
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

 private:
  using Row = std::unique_ptr<_transitive[]>;

  // Replaces the tables with S states and M inputs: nothing accepting, no
  // transitions.
  void Reset(int nStateCount, int nInputSetSize);
  // Takes over the tables of `other`, leaving it empty.
  void MoveFrom(CFSA& other);

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
