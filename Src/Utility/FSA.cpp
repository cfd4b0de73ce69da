#include "Utility/FSA.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"
#include "Utility/Global.h"

namespace {

// Text lines keep at most this many bytes (with the terminating NUL); the
// rest of a longer line is skipped so that line numbers stay right.
constexpr size_t kLineSize = 1024;

// The text form declares S and M freely; refuse tables beyond this many
// transitions (256 MB) rather than trying to allocate them.
constexpr uint64_t kMaxTransitions = uint64_t{1} << 26;

// Parses the integer at *cursor, advancing it past the digits. False (cursor
// unchanged) when no integer starts there after optional blanks. Values
// beyond the range of long saturate.
bool ParseInt(const char** cursor, long* value) {
  char* end = nullptr;
  const long v = strtol(*cursor, &end, 10);
  if (end == *cursor) return false;
  *value = v;
  *cursor = end;
  return true;
}

// The integers among the blank-, tab- or line-end-separated tokens of line;
// tokens that are not integers are skipped.
std::vector<long> ParseIntList(const char* line) {
  std::vector<long> values;
  const char* const kSeparators = " \t\r\n";
  for (const char* p = line + strspn(line, kSeparators); *p != '\0'; p += strspn(p, kSeparators)) {
    const size_t token = strcspn(p, kSeparators);
    const char* cursor = p;
    long value = 0;
    if (ParseInt(&cursor, &value) && cursor == p + token) values.push_back(value);
    p += token;
  }
  return values;
}

// Parses a non-negative count from a header line.
bool ParseCount(const char* line, long* count) {
  const char* cursor = line;
  return ParseInt(&cursor, count) && *count >= 0 && *count <= INT_MAX;
}

int ClampToInt(long value) { return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX)); }

// Moves words[from .. to] down by shift positions.
void ShiftDown(word_t* words, int from, int to, int shift) {
  if (shift > 0 && from <= to) std::copy(words + from, words + to + 1, words + from - shift);
}

// low <= value < high.
bool InRange(long value, long low, long high) { return value >= low && value < high; }

}  // namespace

CFSA::CFSA() : m_nStateCount(0), m_nInputSetSize(0) {}

CFSA::~CFSA() = default;

void CFSA::Reset(int nStateCount, int nInputSetSize) {
  m_nStateCount = nStateCount;
  m_nInputSetSize = nInputSetSize;
  m_pStateAccepted = std::make_unique<int[]>(nStateCount);  // zeroed
  m_pPosIdAccepted = std::make_unique<int[]>(nStateCount);
  m_pTransData = std::make_unique<Row[]>(nStateCount);
  for (int s = 0; s < nStateCount; ++s) {
    m_pTransData[s] = std::make_unique<_transitive[]>(nInputSetSize + 1);
    for (int i = 0; i <= nInputSetSize; ++i) m_pTransData[s][i].state_to = -1;
  }
}

void CFSA::MoveFrom(CFSA& other) {
  m_nStateCount = other.m_nStateCount;
  m_nInputSetSize = other.m_nInputSetSize;
  m_pStateAccepted = std::move(other.m_pStateAccepted);
  m_pPosIdAccepted = std::move(other.m_pPosIdAccepted);
  m_pTransData = std::move(other.m_pTransData);
  other.m_nStateCount = 0;
  other.m_nInputSetSize = 0;
}

bool CFSA::IsAccepted(int state) const {
  return state >= 0 && state < m_nStateCount && m_pStateAccepted[state] == 1;
}

int CFSA::GetAcceptedPosId(int state) const {
  return state >= 0 && state < m_nStateCount ? m_pPosIdAccepted[state] : 0;
}

int CFSA::NextState(int state, int symbol) const {
  if (state < 0 || state >= m_nStateCount || symbol < 0 || symbol >= m_nInputSetSize) {
    return -1;
  }
  return m_pTransData[state][symbol].state_to;
}

bool CFSA::Load(const char* path) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return false;
  BinaryReader in(fp.get());
  int nInputs = 0, nStates = 0;
  // No states at all is only the empty automaton, which has no inputs either.
  if (!in.ReadInt(&nInputs) || !in.ReadInt(&nStates) || nInputs < 0 || nStates < 0 ||
      (nStates == 0 && nInputs != 0)) {
    return false;
  }
  // Check the sizes against the file before allocating anything.
  const uint64_t cells = uint64_t(nStates) * uint64_t(nInputs);
  if (cells > kMaxTransitions ||
      !FileSizeIs(fp.get(), int64_t(8 + 8 * uint64_t(nStates) + 4 * cells))) {
    return false;
  }
  CFSA loaded;
  loaded.Reset(nStates, nInputs);
  if (in.ReadInts(loaded.m_pStateAccepted.get(), nStates) != size_t(nStates) ||
      in.ReadInts(loaded.m_pPosIdAccepted.get(), nStates) != size_t(nStates) ||
      !loaded.AcceptingStatesAreValid()) {
    return false;
  }
  for (int s = 0; s < nStates; ++s) {
    _transitive* row = loaded.m_pTransData[s].get();
    if (in.ReadRecords(row, nInputs) != size_t(nInputs)) return false;
    for (int i = 0; i < nInputs; ++i) {
      if (row[i].state_to != -1 && !InRange(row[i].state_to, 0, nStates)) return false;
    }
  }
  MoveFrom(loaded);
  return true;
}

bool CFSA::AcceptingStatesAreValid() const {
  for (int s = 0; s < m_nStateCount; ++s) {
    const int flag = m_pStateAccepted[s];
    if ((flag != 0 && flag != 1) || (flag == 0 && m_pPosIdAccepted[s] != 0)) return false;
  }
  return true;
}

bool CFSA::Save(const char* path) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  BinaryWriter out(fp.get());
  out.WriteInt(m_nInputSetSize);
  out.WriteInt(m_nStateCount);
  out.WriteInts(m_pStateAccepted.get(), m_nStateCount);
  out.WriteInts(m_pPosIdAccepted.get(), m_nStateCount);
  for (int s = 0; s < m_nStateCount; ++s) {
    out.WriteRecords(m_pTransData[s].get(), m_nInputSetSize);
  }
  return out.ok() && fflush(fp.get()) == 0;
}

bool CFSA::Import(const char* path) {
  FilePtr fp = OpenFile(path, "r");
  if (!fp) return false;
  char line[kLineSize];
  const auto next_line = [&] { return ReadLine(fp.get(), line, sizeof line); };
  // Lines 1 to 4: title, S, comment, M.
  long nStates = 0, nInputs = 0;
  if (!next_line() || !next_line() || !ParseCount(line, &nStates) || !next_line() ||
      !next_line() || !ParseCount(line, &nInputs) || nStates == 0 ||
      uint64_t(nStates) * (uint64_t(nInputs) + 1) > kMaxTransitions) {
    return false;
  }
  CFSA built;
  built.Reset(static_cast<int>(nStates), static_cast<int>(nInputs));
  // Lines 5 to 9: comment, accepting states, comment, their tag ids, comment.
  // A file may end anywhere in here.
  std::vector<long> accepted, tags;
  if (next_line() && next_line()) accepted = ParseIntList(line);
  if (next_line() && next_line()) tags = ParseIntList(line);
  next_line();
  for (size_t i = 0; i < accepted.size(); ++i) {
    if (!InRange(accepted[i], 0, nStates)) continue;
    built.m_pStateAccepted[accepted[i]] = 1;
    built.m_pPosIdAccepted[accepted[i]] = i < tags.size() ? ClampToInt(tags[i]) : 0;
  }
  // Every further line: "from input to". Fields that do not parse keep the
  // previous line's values. The input test admits M itself.
  long transition[3] = {0, 0, 0};
  while (next_line()) {
    const char* cursor = line;
    for (long& field : transition) {
      if (!ParseInt(&cursor, &field)) break;
    }
    const auto [from, input, to] = transition;
    if (InRange(from, 0, nStates) && input >= 0 && input <= nInputs && InRange(to, 0, nStates)) {
      built.m_pTransData[from][input].state_to = static_cast<int>(to);
    }
  }
  MoveFrom(built);
  return true;
}

bool CFSA::Export(const char* path) const {
  FilePtr fp = OpenFile(path, "w");
  if (!fp) return false;
  FILE* out = fp.get();
  fprintf(out, "States=%d,Inputs=%d\n", m_nStateCount, m_nInputSetSize);
  fprintf(out, "Accepting states (state:tag):");
  for (int s = 0; s < m_nStateCount; ++s) {
    if (IsAccepted(s)) fprintf(out, " %d:%d", s, m_pPosIdAccepted[s]);
  }
  fprintf(out, "\nFrom\tInput\tTo\n");
  for (int s = 0; s < m_nStateCount; ++s) {
    for (int i = 0; i < m_nInputSetSize; ++i) {
      const int to = m_pTransData[s][i].state_to;
      if (to != -1) fprintf(out, "%d\t%d\t%d\n", s, i, to);
    }
  }
  return fflush(out) == 0 && !ferror(out);
}

int CFSA::MaxPR(word_t* words, int* count, int handle) const {
  if (words == nullptr || count == nullptr || *count < 1) return 0;
  const int n = *count;
  int start = 0;  // first word of the current attempt
  int i = 0;      // current word
  int state = 0;
  int shift = 0;       // words removed so far
  int lastAccept = 0;  // last word at which an accepting state was reached
  int acceptTag = 0;
  while (i < n) {
    const int next = NextState(state, words[i].POS_id);
    if (next != -1) {
      state = next;
      if (IsAccepted(state)) {
        lastAccept = i;
        acceptTag = m_pPosIdAccepted[state];
      }
      ++i;
    } else if (lastAccept > start) {
      // Merge start .. lastAccept into one word at start - shift.
      word_t& name = words[start - shift];
      if (shift > 0) name = words[start];
      name.end = words[lastAccept].end;
      name.type = static_cast<unsigned char>(acceptTag);
      name.handle = handle;
      shift += lastAccept - start;
      start = i = lastAccept + 1;
      state = 0;
    } else {
      ShiftDown(words, start, i, shift);
      start = i = i + 1;
      state = 0;
    }
  }
  // An attempt still running at the last word is not merged; its words are
  // moved down with the others so that the first n - shift words are the
  // whole sentence.
  ShiftDown(words, start, n - 1, shift);
  *count = n - shift;
  return 0;
}
