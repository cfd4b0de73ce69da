#include "Utility/BinaryIO.h"

#include <sys/stat.h>

#include <cstring>

namespace {

constexpr bool kHostIsLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

// Integers pass through a bounded scratch block.
constexpr size_t kBlockInts = 4096;

// Used only on big-endian hosts (the other branches are discarded).
[[maybe_unused]] uint32_t Swap32(uint32_t v) { return __builtin_bswap32(v); }

}  // namespace

FilePtr OpenFile(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) return FilePtr();
  return FilePtr(fopen(path, mode));
}

int64_t FileSizeOf(FILE* fp) {
  struct stat st;
  if (fp == nullptr || fstat(fileno(fp), &st) != 0 || st.st_size < 0) return -1;
  return static_cast<int64_t>(st.st_size);
}

bool FileSizeIs(FILE* fp, int64_t bytes) { return bytes >= 0 && FileSizeOf(fp) == bytes; }

void StoreLE32(unsigned char* p, int value) {
  const uint32_t v = static_cast<uint32_t>(value);
  p[0] = static_cast<unsigned char>(v);
  p[1] = static_cast<unsigned char>(v >> 8);
  p[2] = static_cast<unsigned char>(v >> 16);
  p[3] = static_cast<unsigned char>(v >> 24);
}

int LoadLE32(const unsigned char* p) {
  const uint32_t v = uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 |
                     uint32_t{p[3]} << 24;
  return static_cast<int>(v);
}

bool BinaryWriter::WriteInts(const int* values, size_t count) {
  if (count == 0) return ok_;
  if (values == nullptr || fp_ == nullptr) return ok_ = false;
  if constexpr (kHostIsLittleEndian) {
    if (fwrite(values, sizeof(int), count, fp_) != count) ok_ = false;
  } else {
    uint32_t block[kBlockInts];
    for (size_t done = 0; done < count;) {
      const size_t n = count - done < kBlockInts ? count - done : kBlockInts;
      for (size_t i = 0; i < n; ++i) {
        uint32_t v;
        memcpy(&v, values + done + i, sizeof v);
        block[i] = Swap32(v);
      }
      if (fwrite(block, sizeof(uint32_t), n, fp_) != n) ok_ = false;
      done += n;
    }
  }
  return ok_;
}

bool BinaryWriter::WriteBytes(const void* bytes, size_t count) {
  if (count == 0) return ok_;
  if (bytes == nullptr || fp_ == nullptr) return ok_ = false;
  if (fwrite(bytes, 1, count, fp_) != count) ok_ = false;
  return ok_;
}

size_t BinaryReader::ReadInts(int* values, size_t count) {
  if (count == 0 || values == nullptr || fp_ == nullptr) return 0;
  // Read through a scratch block so that a trailing fragment of an integer
  // never reaches the destination: what is not read whole stays as it was.
  size_t total = 0;
  uint32_t block[kBlockInts];
  while (total < count) {
    const size_t want = count - total < kBlockInts ? count - total : kBlockInts;
    const size_t got = fread(block, 1, want * sizeof(uint32_t), fp_) / sizeof(uint32_t);
    if constexpr (!kHostIsLittleEndian) {
      for (size_t i = 0; i < got; ++i) block[i] = Swap32(block[i]);
    }
    memcpy(values + total, block, got * sizeof(uint32_t));
    total += got;
    if (got < want) break;
  }
  return total;
}

size_t BinaryReader::ReadBytes(void* bytes, size_t count) {
  if (count == 0 || bytes == nullptr || fp_ == nullptr) return 0;
  return fread(bytes, 1, count, fp_);
}
