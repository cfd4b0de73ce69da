// Utility.h: reading and classifying GBK characters.
//
// A GBK character is one byte below 0x80, or two bytes whose first byte is
// 0x80 or above. A character code is lead byte * 256 + trail byte for a
// two-byte character and the byte value for a one-byte character. These
// predicates decide what atom segmentation needs to know about short strings:
// is it a number, a year, a day or clock value, an ASCII delimiter with a
// full-width form.
#ifndef ZIVOR_UTILITY_UTILITY_H_
#define ZIVOR_UTILITY_UTILITY_H_

// Length in bytes (2 or 1) of the character at s, its code stored in *code.
// At the terminating zero stores -1 and returns 0. A lone high-bit byte at the
// end of the string is one character whose code is the signed byte value.
int Getchar(const char* s, int* code);

// Code of the character at buf[pos], advancing pos past it. A high-bit byte at
// the last position is read as one byte. 'A'..'Z' are folded to lower case.
int GetCharCode(const char* buf, unsigned int& pos, unsigned int len);

// The first occurrence of the two-byte character ch in the two-byte set, if it
// starts at an even offset; null otherwise (and for an empty ch).
const char* CC_Find(const char* set, const char* ch);

// Number of characters among the first len bytes of s (-1: all) that belong to
// set: two-byte ones by CC_Find, one-byte ones byte-wise.
int GetCharCount(const char* set, const char* s, int len = -1);

// True when no byte among the first len bytes (0: all) has the high bit set.
bool IsAllSingleByte(const char* s, int len = 0);

// Whether a number followed by a year unit is a year (len 0: whole string).
bool IsYearTime(const char* s, int len = 0);

// Whether a number followed by a day or clock unit is a date or time part.
bool IsDayTime(const char* s, unsigned int len = 0);

// Whether the first len bytes (0: all) read as one number: prefix, digits,
// separator and digits, percent sign, magnitude characters.
bool IsAllNum(const char* s, unsigned int len = 0);

// Writes c and a NUL to out; when c is an ASCII delimiter, writes its
// full-width GBK form instead and returns true. out holds at least 3 bytes.
bool Delimiter2DictFormat(char c, char* out);

// Index of key in the sorted array (case-insensitive), or -1.
int BinarySearch(const char* key, const char** array, int count);

#endif  // ZIVOR_UTILITY_UTILITY_H_
