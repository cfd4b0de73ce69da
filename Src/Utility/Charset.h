// Charset.h: the character type table.
//
// CCharset maps every GBK character code (the byte value of a one-byte
// character, lead byte * 256 + trail byte of a two-byte one) to a one-byte
// type that atom segmentation groups characters by. The table is built from a
// text list of "CHAR TYPE" lines, saved as a 65,540-byte binary file (a
// 32-bit line count and 65,536 type bytes) and loaded once at start-up;
// lookups are const and may run from any number of threads.
#ifndef ZIVOR_UTILITY_CHARSET_H_
#define ZIVOR_UTILITY_CHARSET_H_

class CCharset {
 public:
  // Number of character codes in the table.
  static constexpr int kCodeCount = 65536;
  // Type given to tab, line feed, carriage return and blank by every Import:
  // the "CHAR TYPE" text form cannot carry white-space characters.
  static constexpr unsigned char kWhiteSpaceType = 28;

  CCharset();  // all types 0
  virtual ~CCharset();
  CCharset(const CCharset&) = delete;
  CCharset& operator=(const CCharset&) = delete;

  // Type 0..255 of a character code; -1 outside 0..65535.
  int GetType(int code) const;
  // Type of the first character of s (-1 for a null s). A high-bit byte
  // followed by another byte is a two-byte character; a lone high-bit byte
  // is looked up by its own value.
  int GetType(const char* s) const;

  // Binary file. Load refuses (false, keeping the table as it was) a file
  // that cannot be opened, is not exactly 65,540 bytes long or holds what
  // Import cannot have built: a negative line count, white space of another
  // type than kWhiteSpaceType, or a type other than 0 for a code no "CHAR
  // TYPE" line can name (0, vertical tab, form feed, 0x0100 to 0x7FFF, and
  // two-byte codes whose trail byte is 0 or white space). Save is false when
  // the file cannot be written.
  bool Load(const char* path);
  bool Save(const char* path) const;

  // Reads "CHAR TYPE" lines; returns the number of lines read (0 when the
  // file cannot be opened, leaving the table unchanged).
  int Import(const char* path);
  // Writes one "CHAR TYPE" line per code 1..65535, codes up to 256 as one
  // byte (256 thus comes out as a zero byte), higher codes as two bytes, high
  // byte first. The dump is for reading, not for importing again. Returns
  // the line count of the last Import (0 when the file cannot be opened).
  int Export(const char* path) const;

 private:
  unsigned char* m_pData;  // kCodeCount types, owned
  int m_nSize;             // lines read by the last Import
};

#endif  // ZIVOR_UTILITY_CHARSET_H_
