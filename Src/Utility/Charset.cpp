#include "Utility/Charset.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "Utility/BinaryIO.h"
#include "Utility/global_linux.h"

namespace {

// Longest part of an import line that is looked at; the rest is ignored.
constexpr size_t kMaxLine = 1024;

// The binary file: the line count and one type per code.
constexpr int64_t kFileBytes = 4 + CCharset::kCodeCount;

// Code of the first character of a NUL-terminated string: a high-bit byte
// opens a two-byte character unless it is the last byte.
int FirstCharCode(const char* s) {
  const unsigned char lead = static_cast<unsigned char>(s[0]);
  if ((lead & 0x80) != 0 && s[1] != '\0') {
    return lead * 256 + static_cast<unsigned char>(s[1]);
  }
  return lead;
}

// The white space every Import gives kWhiteSpaceType.
constexpr int kWhiteSpace[] = {'\t', '\n', '\r', ' '};

bool IsBlank(int byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

// Whether an import line can name the code: its token holds neither NUL nor
// white space, and only a lead byte of 0x80 or more opens a two-byte code.
bool Nameable(int code) {
  const int last = code & 0xFF;
  return (code <= 0xFF || code >= 0x8000) && last != 0 && !IsBlank(last);
}

// The type every table Import builds has for the code, -1 when a line may
// set it to anything.
int FixedType(int code) {
  if (Nameable(code)) return -1;
  const bool white = std::find(std::begin(kWhiteSpace), std::end(kWhiteSpace), code) !=
                     std::end(kWhiteSpace);
  return white ? CCharset::kWhiteSpaceType : 0;
}

bool TypesAreValid(const std::vector<unsigned char>& types) {
  for (int code = 0; code < CCharset::kCodeCount; ++code) {
    const int fixed = FixedType(code);
    if (fixed >= 0 && types[code] != fixed) return false;
  }
  return true;
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
  if (!fp || !FileSizeIs(fp.get(), kFileBytes)) return false;
  BinaryReader in(fp.get());
  int size = 0;
  std::vector<unsigned char> types(kCodeCount);
  if (!in.ReadInt(&size) || size < 0 ||
      in.ReadBytes(types.data(), types.size()) != types.size() || !TypesAreValid(types)) {
    return false;
  }
  std::copy(types.begin(), types.end(), m_pData);
  m_nSize = size;
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
  for (const int code : kWhiteSpace) m_pData[code] = kWhiteSpaceType;
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
