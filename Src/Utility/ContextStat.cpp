#include "Utility/ContextStat.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "Utility/BinaryIO.h"
#include "Utility/POSmap.h"
#include "Utility/Utility.h"

namespace {

constexpr int kSymbolBufferSize = CContextStat::kSymbolNameLen + 1;

// Bubble sort that exchanges the strings' contents, not the pointers, and
// stops after the first pass without an exchange. The order is the one
// BinarySearch expects (ASCII case folded to lower case).
void SortNamesInPlace(int n, char** names) {
  std::string held;
  for (bool exchanged = true; exchanged;) {
    exchanged = false;
    for (int i = 0; i + 1 < n; ++i) {
      if (strcasecmp(names[i], names[i + 1]) <= 0) continue;
      held = names[i];
      strcpy(names[i], names[i + 1]);
      strcpy(names[i + 1], held.c_str());
      exchanged = true;
    }
  }
}

// Bytes of a statistics file of n symbols: n, the names when it has them,
// the total, the frequencies and the matrix.
int64_t FileBytes(int n, bool symbols) {
  return 1 + (symbols ? int64_t{CContextStat::kSymbolNameLen} * n : 0) + 4 + 4 * int64_t{n} +
         4 * int64_t{n} * n;
}

}  // namespace

CContextStat::~CContextStat() { Destroy(); }

void CContextStat::Destroy() {
  for (int i = 0; i < m_nTableLen; ++i) {
    if (m_pSymbolTable != nullptr) free(m_pSymbolTable[i]);
    if (m_aContextArray != nullptr) free(m_aContextArray[i]);
  }
  free(m_pSymbolTable);
  free(m_aContextArray);
  free(m_aTagFreq);
  m_pSymbolTable = nullptr;
  m_aContextArray = nullptr;
  m_aTagFreq = nullptr;
  m_nTableLen = 0;
  m_aLogPossibility.clear();
}

bool CContextStat::Allocate(int n, bool with_symbols) {
  Destroy();
  if (n == 0) return true;
  // Destroy copes with any partial allocation: calloc leaves missing rows null.
  m_nTableLen = static_cast<unsigned char>(n);
  m_aTagFreq = static_cast<int*>(calloc(n, sizeof(int)));
  m_aContextArray = static_cast<int**>(calloc(n, sizeof(int*)));
  if (with_symbols) m_pSymbolTable = static_cast<char**>(calloc(n, sizeof(char*)));
  bool ok = m_aTagFreq != nullptr && m_aContextArray != nullptr &&
            (!with_symbols || m_pSymbolTable != nullptr);
  for (int i = 0; ok && i < n; ++i) {
    m_aContextArray[i] = static_cast<int*>(calloc(n, sizeof(int)));
    ok = m_aContextArray[i] != nullptr;
    if (ok && with_symbols) {
      m_pSymbolTable[i] = static_cast<char*>(calloc(kSymbolBufferSize, 1));
      ok = m_pSymbolTable[i] != nullptr;
    }
  }
  if (!ok) Destroy();
  return ok;
}

bool CContextStat::Load(const char* path, bool symbols) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return false;
  BinaryReader in(fp.get());
  unsigned char n = 0;
  if (in.ReadBytes(&n, 1) != 1 || !FileSizeIs(fp.get(), FileBytes(n, symbols))) return false;
  CContextStat loaded;
  if (!loaded.Allocate(n, symbols) || !loaded.ReadTables(&in) || !loaded.CountsAddUp() ||
      !loaded.SymbolsAreValid()) {
    return false;
  }
  loaded.CacheLogPossibilities();
  Swap(loaded);
  return true;
}

bool CContextStat::ReadTables(BinaryReader* in) {
  const int n = m_nTableLen;
  for (int i = 0; m_pSymbolTable != nullptr && i < n; ++i) {
    if (in->ReadBytes(m_pSymbolTable[i], kSymbolNameLen) != size_t{kSymbolNameLen}) return false;
  }
  if (!in->ReadInt(&m_nTotalFreq) || in->ReadInts(m_aTagFreq, n) != size_t(n)) return false;
  for (int i = 0; i < n; ++i) {
    if (in->ReadInts(m_aContextArray[i], n) != size_t(n)) return false;
  }
  return true;
}

bool CContextStat::CountsAddUp() const {
  int64_t total = 0;
  for (int a = 0; a < m_nTableLen; ++a) {
    int64_t row = 0;
    for (int b = 0; b < m_nTableLen; ++b) row += m_aContextArray[a][b];
    if (row != m_aTagFreq[a]) return false;
    total += m_aTagFreq[a];
  }
  return total == m_nTotalFreq;
}

bool CContextStat::SymbolsAreValid() const {
  for (int i = 0; m_pSymbolTable != nullptr && i < m_nTableLen; ++i) {
    const char* name = m_pSymbolTable[i];
    const size_t length = strnlen(name, kSymbolNameLen);
    if (std::any_of(name + length, name + kSymbolNameLen, [](char c) { return c != '\0'; }) ||
        (i > 0 && strcasecmp(m_pSymbolTable[i - 1], name) > 0)) {
      return false;
    }
  }
  return true;
}

void CContextStat::Swap(CContextStat& other) {
  std::swap(m_nTableLen, other.m_nTableLen);
  std::swap(m_pSymbolTable, other.m_pSymbolTable);
  std::swap(m_aContextArray, other.m_aContextArray);
  std::swap(m_aTagFreq, other.m_aTagFreq);
  std::swap(m_nTotalFreq, other.m_nTotalFreq);
  m_aLogPossibility.swap(other.m_aLogPossibility);
}

void CContextStat::CacheLogPossibilities() {
  const int n = m_nTableLen;
  m_aLogPossibility.resize(static_cast<size_t>(n) * n);
  for (int prev = 0; prev < n; ++prev) {
    for (int next = 0; next < n; ++next) {
      m_aLogPossibility[prev * n + next] = std::log(GetContextPossibility(
          static_cast<unsigned char>(prev), static_cast<unsigned char>(next)));
    }
  }
}

double CContextStat::GetLogPossibility(unsigned char prev, unsigned char next) const {
  if (prev < m_nTableLen && next < m_nTableLen && !m_aLogPossibility.empty()) {
    return m_aLogPossibility[prev * m_nTableLen + next];
  }
  return std::log(GetContextPossibility(prev, next));
}

bool CContextStat::Save(const char* path, const CPOSmap& map) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  FilePtr text = OpenFile((std::string(path) + ".shw").c_str(), "w");
  if (!text) return false;

  BinaryWriter out(fp.get());
  out.WriteBytes(&m_nTableLen, 1);
  if (m_pSymbolTable != nullptr) {
    for (int i = 0; i < m_nTableLen; ++i) out.WriteBytes(m_pSymbolTable[i], kSymbolNameLen);
  }
  out.WriteInt(m_nTotalFreq);
  out.WriteInts(m_aTagFreq, m_nTableLen);
  for (int i = 0; i < m_nTableLen; ++i) out.WriteInts(m_aContextArray[i], m_nTableLen);

  WriteShow(text.get(), &map);
  return out.ok() && ferror(text.get()) == 0;
}

bool CContextStat::Show(const char* path, const CPOSmap* map) const {
  FilePtr text = OpenFile(path, "w");
  if (!text) return false;
  WriteShow(text.get(), map);
  return ferror(text.get()) == 0;
}

void CContextStat::WriteShow(FILE* fp, const CPOSmap* map) const {
  const bool named = m_pSymbolTable != nullptr;
  char mapped[CPOSmap::kNameBufferSize > 12 ? CPOSmap::kNameBufferSize : 12];
  auto name_of = [&](int id) -> const char* {
    if (named) return m_pSymbolTable[id];
    if (map != nullptr) {
      map->GetPOS(static_cast<unsigned char>(id), mapped);
    } else {
      snprintf(mapped, sizeof mapped, "%d", id);
    }
    return mapped;
  };

  fprintf(fp, "Total frequency=%d:\n", m_nTotalFreq);
  fprintf(fp, "Table Len=%d\nSymbol:\n           ", m_nTableLen);
  for (int id = 0; id < m_nTableLen; ++id) fprintf(fp, "%5s ", name_of(id));
  fputs(named ? "\n    " : "\n", fp);
  for (int a = 0; a < m_nTableLen; ++a) {
    fprintf(fp, named ? "No.%2d=%3s: " : "No.%2d=%5s: ", a, name_of(a));
    for (int b = 0; b < m_nTableLen; ++b) fprintf(fp, "%5d ", m_aContextArray[a][b]);
    fprintf(fp, "total=%d:\n", m_aTagFreq[a]);
  }
}

bool CContextStat::SetSymbol(unsigned char n) { return Allocate(n, false); }

bool CContextStat::SetSymbol(int n, char** names) {
  if (n < 0 || n > 255 || (n > 0 && names == nullptr)) return false;
  for (int i = 0; i < n; ++i) {
    if (names[i] == nullptr) return false;
  }
  SortNamesInPlace(n, names);
  if (!Allocate(n, true)) return false;
  for (int i = 0; i < n; ++i) strncpy(m_pSymbolTable[i], names[i], kSymbolNameLen);
  return true;
}

bool CContextStat::Add(unsigned char prev, unsigned char next, int count) {
  if (prev >= m_nTableLen || next >= m_nTableLen) return false;
  int cell, freq, total;
  if (__builtin_add_overflow(m_aContextArray[prev][next], count, &cell) ||
      __builtin_add_overflow(m_aTagFreq[prev], count, &freq) ||
      __builtin_add_overflow(m_nTotalFreq, count, &total)) {
    return false;
  }
  m_aLogPossibility.clear();
  m_aContextArray[prev][next] = cell;
  m_aTagFreq[prev] = freq;
  m_nTotalFreq = total;
  return true;
}

bool CContextStat::Add(const char* prev, const char* next, int count) {
  const int a = GetSymbolID(prev);
  const int b = GetSymbolID(next);
  if (a < 0 || b < 0) return false;
  return Add(static_cast<unsigned char>(a), static_cast<unsigned char>(b), count);
}

int CContextStat::GetSymbolID(const char* name) const {
  if (m_pSymbolTable == nullptr || name == nullptr) return -1;
  return BinarySearch(name, const_cast<const char**>(m_pSymbolTable), m_nTableLen);
}

int CContextStat::GetFrequency(unsigned char id) const {
  return id < m_nTableLen ? m_aTagFreq[id] : 0;
}

int CContextStat::GetFrequency(const char* name) const {
  const int id = GetSymbolID(name);
  return id < 0 ? 0 : GetFrequency(static_cast<unsigned char>(id));
}

int CContextStat::GetContextCount(unsigned char prev, unsigned char next) const {
  if (prev >= m_nTableLen || next >= m_nTableLen) return 0;
  return m_aContextArray[prev][next];
}

double CContextStat::GetContextPossibility(unsigned char prev, unsigned char next) const {
  if (prev >= m_nTableLen || next >= m_nTableLen) return kFloorPossibility;
  const int f = m_aTagFreq[prev];
  const int c = m_aContextArray[prev][next];
  // Only counts from a damaged file or negative Adds can be negative; they
  // are treated as unseen rather than producing a negative score.
  if (f <= 0 || c <= 0 || m_nTotalFreq <= 0) return kFloorPossibility;
  const long double frequency = f;
  const long double result =
      0.99999L * (0.9L * c / frequency + 0.1L * frequency / m_nTotalFreq) + 0.00001L;
  return static_cast<double>(result);
}

double CContextStat::GetContextPossibility(const char* prev, const char* next) const {
  const int a = GetSymbolID(prev);
  const int b = GetSymbolID(next);
  if (a < 0 || b < 0) return kFloorPossibility;
  return GetContextPossibility(static_cast<unsigned char>(a), static_cast<unsigned char>(b));
}
