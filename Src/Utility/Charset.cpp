#include "Utility/Charset.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"

namespace {

// Longest part of an import line that is looked at; the rest is ignored.
constexpr size_t kMaxLine = 1024;

// Code of the first character of a NUL-terminated string: a high-bit byte
// opens a two-byte character unless it is the last byte.
int FirstCharCode(const char* s) {
  const unsigned char lead = static_cast<unsigned char>(s[0]);
  if ((lead & 0x80) != 0 && s[1] != '\0') {
    return lead * 256 + static_cast<unsigned char>(s[1]);
  }
  return lead;
}

}  // namespace

CCharset::CCharset() : m_pData(static_cast<unsigned char*>(calloc(kCodeCount, 1))), m_nSize(0) {
  if (m_pData == nullptr) throw std::bad_alloc();
}

CCharset::~CCharset() { free(m_pData); }

int CCharset::GetType(int code) const {
  if (code < 0 || code >= kCodeCount) return -1;
  return m_pData[code];
}

int CCharset::GetType(const char* s) const { return s == nullptr ? -1 : GetType(FirstCharCode(s)); }

bool CCharset::Load(const char* path) {
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return false;
  BinaryReader in(fp.get());
  in.ReadInt(&m_nSize);
  in.ReadBytes(m_pData, kCodeCount);
  return true;
}

bool CCharset::Save(const char* path) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return false;
  BinaryWriter out(fp.get());
  out.WriteInt(m_nSize);
  out.WriteBytes(m_pData, kCodeCount);
  return out.ok();
}

int CCharset::Import(const char* path) {
  if (path == nullptr) return 0;
  FilePtr fp = OpenFile(path, "rb");
  if (!fp) return 0;
  m_nSize = 0;
  std::string line;
  while (ReadLine(fp.get(), &line, kMaxLine + 1)) {
    ++m_nSize;
    char token[kMaxLine + 1];
    int type = 0;
    if (sscanf(line.c_str(), "%1024s %d", token, &type) == 2) {
      m_pData[FirstCharCode(token)] = static_cast<unsigned char>(type);
    }
  }
  for (const int code : {'\t', '\n', '\r', ' '}) m_pData[code] = kWhiteSpaceType;
  return m_nSize;
}

int CCharset::Export(const char* path) const {
  FilePtr fp = OpenFile(path, "wb");
  if (!fp) return 0;
  for (int code = 1; code < kCodeCount; ++code) {
    const unsigned char bytes[2] = {static_cast<unsigned char>(code >> 8),
                                    static_cast<unsigned char>(code)};
    if (code <= 256) {
      fputc(bytes[1], fp.get());  // 256 keeps only its low byte, a zero
    } else {
      fwrite(bytes, 1, 2, fp.get());
    }
    fprintf(fp.get(), " %d\n", m_pData[code]);
  }
  return m_nSize;
}
