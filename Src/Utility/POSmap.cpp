#include "Utility/POSmap.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "Utility/BinaryIO.h"
#include "Utility/Global.h"
#include "Utility/global_linux.h"

namespace {

// Map lines are read in pieces of up to this many bytes (the rest of a longer
// line is skipped: it holds nothing but the ignored tail of the line).
constexpr int kLineBufferSize = 100;
// Identifier 255 means "no tag", so a map names at most 255 tags.
constexpr int kMaxNames = 255;

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

char FoldCase(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

bool EqualsIgnoreCase(const char* a, const char* b) {
  for (; *a != '\0' && *b != '\0'; ++a, ++b) {
    if (FoldCase(*a) != FoldCase(*b)) return false;
  }
  return *a == *b;
}

// Length of the first token of line (stored at *start), cut to the longest
// prefix of whole GBK characters within CPOSmap::kMaxNameLen bytes.
int FirstToken(const char* line, const char** start) {
  while (IsBlank(*line)) ++line;
  *start = line;
  int len = 0;
  while (line[len] != '\0' && !IsBlank(line[len])) {
    const bool two_bytes = (static_cast<unsigned char>(line[len]) >= 0x80) &&
                           line[len + 1] != '\0' && !IsBlank(line[len + 1]);
    const int step = two_bytes ? 2 : 1;
    if (len + step > CPOSmap::kMaxNameLen) break;
    len += step;
  }
  return len;
}

// Whether the file holds a NUL byte, which no text map does; the file is
// then back at its start.
bool HoldsNul(FILE* fp) {
  for (int c = getc(fp); c != EOF; c = getc(fp)) {
    if (c == '\0') return true;
  }
  rewind(fp);
  return false;
}

char* CopyName(const char* name, int len) {
  char* copy = static_cast<char*>(malloc(len + 1));
  if (copy == nullptr) return nullptr;
  memcpy(copy, name, len);
  copy[len] = '\0';
  return copy;
}

}  // namespace

CPOSmap::~CPOSmap() { Release(); }

void CPOSmap::Release() {
  if (m_pData != nullptr) {
    for (int i = 0; i < m_nItemCount; ++i) free(m_pData[i]);
    free(m_pData);
  }
  m_pData = nullptr;
  m_nItemCount = 0;
}

bool CPOSmap::Load(const char* path) {
  FilePtr fp = OpenFile(path, "r");
  if (!fp || HoldsNul(fp.get())) return false;
  // One slot per line (a line never yields more than one name) plus the
  // always-empty slot after the last name.
  const int lines = std::clamp(GetFileLinesCount(fp.get()), 0, kMaxNames);
  CPOSmap loaded;
  loaded.m_pData = static_cast<char**>(calloc(lines + 1, sizeof(char*)));
  if (loaded.m_pData == nullptr) return false;

  char line[kLineBufferSize];
  while (loaded.m_nItemCount < lines && ReadLine(fp.get(), line, sizeof line)) {
    const char* name;
    const int len = FirstToken(line, &name);
    if (len == 0) continue;
    char* copy = CopyName(name, len);
    if (copy == nullptr) break;
    loaded.m_pData[loaded.m_nItemCount++] = copy;
  }
  if (loaded.m_nItemCount == 0) return false;
  std::swap(m_pData, loaded.m_pData);
  std::swap(m_nItemCount, loaded.m_nItemCount);
  return true;
}

const char* CPOSmap::GetPOS(unsigned char id) const {
  if (m_pData == nullptr || id > m_nItemCount) return nullptr;
  return m_pData[id];
}

int CPOSmap::GetPOS(unsigned char id, char* buffer) const {
  if (buffer == nullptr) return 0;
  const char* name = GetPOS(id);
  if (name == nullptr) {
    strcpy(buffer, "un");
    return 0;
  }
  strcpy(buffer, name);
  return 1;
}

unsigned char CPOSmap::GetID(const char* name) const {
  if (name == nullptr || name[0] == '\0' || m_pData == nullptr) return kNoTag;
  for (int i = 0; i < m_nItemCount; ++i) {
    if (EqualsIgnoreCase(m_pData[i], name)) return static_cast<unsigned char>(i);
  }
  return kNoTag;
}
