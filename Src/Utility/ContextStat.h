// ContextStat.h: first-order statistics of a tag sequence and the smoothed
// transition probability the HMM tagger scores with.
//
// For N symbols (tags or person-name roles, ids 0 .. N-1) the table holds how
// often each symbol precedes another ([a][b] counts a followed by b), how
// often each symbol occurs as the preceding one, and the grand total. An
// optional symbol table (names sorted ignoring ASCII case) lets the counts be
// addressed by name while they are being collected.
//
// Binary file, little-endian, no header: N (1 byte); when written with a
// symbol table, N names of 100 NUL-padded bytes; the total (int32); the N
// symbol frequencies (int32); the N x N matrix row by row (int32). Nothing
// in the file says whether the names are there: the loader must be told.
// Save also writes PATH.shw, a readable table of the counts.
//
// Lookups are const and lock-free; only Load, Save, SetSymbol and Add change
// or need exclusive use of the object. Load also tabulates the logarithms of
// the transition probabilities, which the tagger asks for most.
#ifndef ZIVOR_UTILITY_CONTEXTSTAT_H_
#define ZIVOR_UTILITY_CONTEXTSTAT_H_

#include <cstdio>
#include <vector>

class BinaryReader;
class CPOSmap;

class CContextStat {
 public:
  // Bytes of a symbol name in the file; in memory each name has one more for
  // its NUL, and longer names are cut.
  static constexpr int kSymbolNameLen = 100;
  // Score of a transition that was never seen or lies outside the table.
  static constexpr double kFloorPossibility = 0.00001;

  CContextStat() = default;
  virtual ~CContextStat();
  CContextStat(const CContextStat&) = delete;
  CContextStat& operator=(const CContextStat&) = delete;

  // Reads a statistics file; `symbols` says whether it carries the names.
  // False, keeping the previous table, when the file cannot be opened, is
  // not exactly as long as its symbol count says (so a file with names read
  // as one without, or the other way round, is refused too), its counts do
  // not add up as Add keeps them (each symbol's frequency the sum of its row,
  // the total the sum of the frequencies: a table saved after SetSymbol kept
  // an earlier total does not load), or a name is not NUL-padded or out of
  // the symbol table's order.
  bool Load(const char* path, bool symbols);
  // Writes the binary file and PATH.shw. Names in the .shw text come from the
  // symbol table when there is one, else from `map`.
  bool Save(const char* path, const CPOSmap& map) const;
  // Writes only the readable table; with no symbol table and no map the
  // symbols are shown by their ids.
  bool Show(const char* path, const CPOSmap* map) const;

  // Starts empty counts for n symbols, without names. The total is kept.
  bool SetSymbol(unsigned char n);
  // Starts empty counts for the n names given (n <= 255). Sorts `names` in
  // place by swapping their contents, so every names[i] must have room for
  // the longest of them; names are kept up to kSymbolNameLen bytes.
  bool SetSymbol(int n, char** names);

  // Adds count to [prev][next], to the frequency of prev and to the total.
  // False, changing nothing, when an id is out of range, a name is unknown
  // or a sum would overflow.
  bool Add(unsigned char prev, unsigned char next, int count);
  bool Add(const char* prev, const char* next, int count);

  // How often `id` precedes another symbol; 0 when out of range or unknown.
  int GetFrequency(unsigned char id) const;
  int GetFrequency(const char* name) const;

  // 0.99999 * (0.9 * C / F + 0.1 * F / T) + 0.00001 with C = [prev][next],
  // F = frequency of prev and T = total; kFloorPossibility when an id is out
  // of range, a name unknown, or a count not positive.
  double GetContextPossibility(unsigned char prev, unsigned char next) const;
  double GetContextPossibility(const char* prev, const char* next) const;
  // The natural logarithm of GetContextPossibility(prev, next): read from a
  // table filled by Load, computed while the counts are being collected.
  double GetLogPossibility(unsigned char prev, unsigned char next) const;

  // The raw counts, for inspection: the table size, the total, and the
  // count of [prev][next] (0 out of range).
  unsigned char GetTableLen() const { return m_nTableLen; }
  int GetTotalFreq() const { return m_nTotalFreq; }
  int GetContextCount(unsigned char prev, unsigned char next) const;
  // Position of `name` in the symbol table, or -1.
  int GetSymbolID(const char* name) const;

  // Releases every array; the table becomes empty.
  void Destroy();

 private:
  bool Allocate(int n, bool with_symbols);
  // Load's steps: reading the allocated tables, and checking them.
  bool ReadTables(BinaryReader* in);
  bool CountsAddUp() const;
  bool SymbolsAreValid() const;
  void Swap(CContextStat& other);
  void WriteShow(FILE* fp, const CPOSmap* map) const;
  // Fills m_aLogPossibility from the counts.
  void CacheLogPossibilities();

  unsigned char m_nTableLen = 0;    // N
  char** m_pSymbolTable = nullptr;  // N names of kSymbolNameLen + 1 bytes, or null
  int** m_aContextArray = nullptr;  // N rows of N counts
  int* m_aTagFreq = nullptr;        // N counts
  int m_nTotalFreq = 0;
  std::vector<double> m_aLogPossibility;  // N x N, or empty while counting
};

#endif  // ZIVOR_UTILITY_CONTEXTSTAT_H_
