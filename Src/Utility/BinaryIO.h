// BinaryIO.h: the one place where binary data files are read and written.
//
// Every binary file of the system is a raw dump of counts followed by arrays:
// 32-bit signed integers, single bytes, and records made only of 32-bit
// integers, all little-endian, with no header. BinaryWriter and BinaryReader
// wrap an open stream and convert to and from the host's byte order; the
// Store/Load helpers encode mixed records (a tag byte beside an integer, a
// fixed-length name) into byte buffers. OpenFile gives a FILE* that closes
// itself.
#ifndef ZIVOR_UTILITY_BINARYIO_H_
#define ZIVOR_UTILITY_BINARYIO_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>

static_assert(sizeof(int) == 4, "the data files store int as 32 bits");

struct FileCloser {
  void operator()(FILE* fp) const {
    if (fp != nullptr) fclose(fp);
  }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

// Owns a malloc'ed array while a loader fills and checks it, until the
// table it is for takes it over.
struct FreeDeleter {
  void operator()(void* p) const { free(p); }
};
template <class T>
using MallocPtr = std::unique_ptr<T, FreeDeleter>;

// fopen that returns an owning pointer (null when the file cannot be opened).
FilePtr OpenFile(const char* path, const char* mode);

// Size in bytes of an open file, -1 when it cannot be measured.
int64_t FileSizeOf(FILE* fp);

// Whether the open file is exactly `bytes` long. The formats carry no header
// or checksum, so the size is the first thing their counts can be checked
// against: loaders compare it with the size the counts announce before they
// allocate anything, and refuse a file cut short or followed by stray bytes.
bool FileSizeIs(FILE* fp, int64_t bytes);

// Whether the runs of a key-grouped index, in key order and skipping the
// (-1, -1) entries of keys without records, are inclusive ranges that cover
// the records 0 .. size - 1 exactly once and in order: the layout every
// builder of such a table writes, so that no lookup can reach another key's
// records or leave the array.
template <class Run>
bool RunsTile(const Run* runs, size_t count, int size) {
  int next = 0;
  for (size_t i = 0; i < count; ++i) {
    const Run& run = runs[i];
    if (run.start == -1 && run.end == -1) continue;
    if (run.start != next || run.end < run.start || run.end >= size) return false;
    next = run.end + 1;
  }
  return next == size;
}

// Encodes/decodes one little-endian 32-bit integer at p.
void StoreLE32(unsigned char* p, int value);
int LoadLE32(const unsigned char* p);

// True for records that are nothing but a sequence of 32-bit integers, which
// the reader and writer treat as an int array.
template <class Record>
constexpr bool kIsIntRecord = std::is_trivially_copyable_v<Record> &&
                              sizeof(Record) % sizeof(int) == 0 &&
                              alignof(Record) == alignof(int);

class BinaryWriter {
 public:
  explicit BinaryWriter(FILE* fp) : fp_(fp) {}

  bool WriteInt(int value) { return WriteInts(&value, 1); }
  bool WriteInts(const int* values, size_t count);
  bool WriteBytes(const void* bytes, size_t count);
  template <class Record>
  bool WriteRecords(const Record* records, size_t count) {
    static_assert(kIsIntRecord<Record>, "records must consist of 32-bit ints");
    return WriteInts(reinterpret_cast<const int*>(records),
                     count * (sizeof(Record) / sizeof(int)));
  }

  // False once any write has failed.
  bool ok() const { return ok_; }

 private:
  FILE* fp_;
  bool ok_ = true;
};

// Reads stop quietly at the end of the file: a short read leaves the rest of
// the destination as it was, and the count functions say how much arrived.
class BinaryReader {
 public:
  explicit BinaryReader(FILE* fp) : fp_(fp) {}

  bool ReadInt(int* value) { return ReadInts(value, 1) == 1; }
  // Returns the number of integers read.
  size_t ReadInts(int* values, size_t count);
  // Returns the number of bytes read.
  size_t ReadBytes(void* bytes, size_t count);
  // Returns the number of whole records read.
  template <class Record>
  size_t ReadRecords(Record* records, size_t count) {
    static_assert(kIsIntRecord<Record>, "records must consist of 32-bit ints");
    constexpr size_t kInts = sizeof(Record) / sizeof(int);
    return ReadInts(reinterpret_cast<int*>(records), count * kInts) / kInts;
  }

 private:
  FILE* fp_;
};

#endif  // ZIVOR_UTILITY_BINARYIO_H_
