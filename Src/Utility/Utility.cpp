#include "Utility/Utility.h"

#include <strings.h>

#include <cstring>

namespace {

// The character sets the predicates test against, as GBK bytes.
constexpr const char kYearChars[] =
    "\xc1\xe3\xa1\xf0\xa9\x96\xa3\xb0\xd2\xbb\xb6\xfe\xc8\xfd\xcb\xc4\xce\xe5\xc1\xf9"
    "\xc6\xdf\xb0\xcb\xbe\xc5\xd2\xbc\xb7\xa1\xc8\xfe\xcb\xc1\xce\xe9\xc2\xbd\xc6\xe2"
    "\xb0\xc6\xbe\xc1";  // 零○〇０一二三四五六七八九壹贰叁肆伍陆柒捌玖
constexpr const char kDayTimeChars[] =
    "\xc1\xe3\xd2\xbb\xb6\xfe\xc8\xfd\xcb\xc4\xce\xe5\xc1\xf9\xc6\xdf\xb0\xcb\xbe\xc5"
    "\xca\xae\xd2\xbc\xb7\xa1\xc8\xfe\xcb\xc1\xce\xe9\xc2\xbd\xc6\xe2\xb0\xc6\xbe\xc1"
    "\xa3\xb0\xa3\xb1\xa3\xb2\xa3\xb3\xa3\xb4\xa3\xb5\xa3\xb6\xa3\xb7\xa3\xb8\xa3\xb9";
    // 零一二三四五六七八九十壹贰叁肆伍陆柒捌玖０１２３４５６７８９
constexpr const char kWideFiveToNine[] = "\xa3\xb5\xa3\xb6\xa3\xb7\xa3\xb8\xa3\xb9";  // ５６７８９
constexpr const char kYearThousandChars[] = "\xc7\xa7\xc7\xaa\xc1\xe3\xa9\x96\xa1\xf0";  // 千仟零〇○
constexpr const char kThousand[] = "\xc7\xa7\xc7\xaa";                  // 千仟
constexpr const char kNumPrefixes[] = "\xa1\xc0\xb5\xda\xa1\xaa\xa3\xab";  // ±第—＋
constexpr const char kDecimalSeparators[] = "\xa1\xc3\xa1\xa4\xa3\xae\xa3\xaf";  // ∶·．／
constexpr const char kPercentSigns[] = "\xa3\xa5\xa1\xeb";  // ％‰
constexpr const char kMagnitudes[] =
    "\xb0\xd9\xc7\xa7\xcd\xf2\xd2\xda\xb0\xdb\xc7\xaa\xd5\xd7";  // 百千万亿佰仟兆

// ASCII delimiters and their full-width forms, position for position.
constexpr const char kAsciiDelimiters[] = ".,;:?!%(){+}[]/=";
constexpr const char* kWideDelimiters[] = {
    "\xa1\xa3", "\xa3\xac", "\xa3\xbb", "\xa3\xba", "\xa3\xbf", "\xa3\xa1",
    "\xa3\xa5", "\xa3\xa8", "\xa3\xa9", "\xa3\xfb", "\xa3\xab", "\xa3\xfd",
    "\xa3\xdb", "\xa3\xdd", "\xa3\xaf", "\xa3\xbd"};
static_assert(sizeof(kAsciiDelimiters) - 1 ==
              sizeof(kWideDelimiters) / sizeof(kWideDelimiters[0]));

unsigned char Byte(const char* s, unsigned int i) { return static_cast<unsigned char>(s[i]); }

bool IsHigh(const char* s, unsigned int i) { return Byte(s, i) >= 0x80; }

// Whether the two-byte character at s[i] lies within len and belongs to set.
bool WideCharIn(const char* set, const char* s, unsigned int i, unsigned int len) {
  if (i + 1 >= len || !IsHigh(s, i)) return false;
  const char ch[3] = {s[i], s[i + 1], '\0'};
  return CC_Find(set, ch) != nullptr;
}

bool IsWideDigit(const char* s, unsigned int i, unsigned int len) {
  return i + 1 < len && Byte(s, i) == 0xA3 && Byte(s, i + 1) >= 0xB0 && Byte(s, i + 1) <= 0xB9;
}

bool IsAsciiDigit(const char* s, unsigned int i, unsigned int len) {
  return i < len && s[i] >= '0' && s[i] <= '9';
}

// Consumes a run of digits tested by `is_digit`; returns the new position.
template <class DigitTest>
unsigned int SkipDigits(const char* s, unsigned int i, unsigned int len, DigitTest is_digit,
                        unsigned int width) {
  while (is_digit(s, i, len)) i += width;
  return i;
}

// Consumes a decimal separator if something precedes it; returns the new position.
unsigned int SkipSeparator(const char* s, unsigned int i, unsigned int len) {
  if (i == 0 || i >= len) return i;
  if (WideCharIn(kDecimalSeparators, s, i, len)) return i + 2;
  if (s[i] == '.' || s[i] == '/') return i + 1;
  return i;
}

}  // namespace

int Getchar(const char* s, int* code) {
  if (s[0] == '\0') {
    *code = -1;
    return 0;
  }
  if (IsHigh(s, 0) && s[1] != '\0') {
    *code = Byte(s, 0) * 256 + Byte(s, 1);
    return 2;
  }
  *code = static_cast<signed char>(s[0]);
  return 1;
}

int GetCharCode(const char* buf, unsigned int& pos, unsigned int len) {
  if (pos >= len) return -1;
  const unsigned char first = Byte(buf, pos);
  if (first >= 0x80 && pos + 1 < len) {
    const int code = first * 256 + Byte(buf, pos + 1);
    pos += 2;
    return code;
  }
  ++pos;
  return (first >= 'A' && first <= 'Z') ? first + 32 : first;
}

const char* CC_Find(const char* set, const char* ch) {
  if (set == nullptr || ch == nullptr || ch[0] == '\0') return nullptr;
  const char* hit = strstr(set, ch);
  if (hit == nullptr || (hit - set) % 2 != 0) return nullptr;
  return hit;
}

int GetCharCount(const char* set, const char* s, int len) {
  const unsigned int limit = len < 0 ? static_cast<unsigned int>(strlen(s))
                                     : static_cast<unsigned int>(len);
  int count = 0;
  for (unsigned int i = 0; i < limit;) {
    if (IsHigh(s, i) && i + 1 < limit) {
      if (WideCharIn(set, s, i, limit)) ++count;
      i += 2;
    } else {
      if (s[i] != '\0' && strchr(set, s[i]) != nullptr) ++count;
      ++i;
    }
  }
  return count;
}

bool IsAllSingleByte(const char* s, int len) {
  const unsigned int limit = len <= 0 ? static_cast<unsigned int>(strlen(s))
                                      : static_cast<unsigned int>(len);
  for (unsigned int i = 0; i < limit; ++i) {
    if (IsHigh(s, i)) return false;
  }
  return true;
}

bool IsYearTime(const char* s, int len) {
  if (len <= 0) len = static_cast<int>(strlen(s));
  if (len > 2 && GetCharCount(kYearChars, s, len) == len / 2) return true;
  if (IsAllSingleByte(s, len)) {
    if (len == 4) return true;
    if (len == 2) return s[0] > '4';  // a two-digit year from 50 to 99
  }
  if (IsAllNum(s, static_cast<unsigned int>(len))) {
    if (len > 5) return true;
    if (len == 4) return WideCharIn(kWideFiveToNine, s, 0, 4);
  } else if (len == 8) {
    return GetCharCount(kYearThousandChars, s, len) == 2;
  }
  return len == 2 && WideCharIn(kThousand, s, 0, 2);
}

bool IsDayTime(const char* s, unsigned int len) {
  if (len == 0) len = static_cast<unsigned int>(strlen(s));
  if (len < 7 && GetCharCount(kDayTimeChars, s, static_cast<int>(len)) ==
                     static_cast<int>(len / 2)) {
    return true;
  }
  if (len >= 3) return false;
  for (unsigned int i = 0; i < len; ++i) {
    if (!IsAsciiDigit(s, i, len)) return false;
  }
  return true;
}

bool IsAllNum(const char* s, unsigned int len) {
  if (len == 0) len = static_cast<unsigned int>(strlen(s));
  unsigned int i = 0;
  if (WideCharIn(kNumPrefixes, s, i, len)) {
    i += 2;
  } else if (i < len && (s[i] == '+' || s[i] == '-')) {
    ++i;
  }
  i = SkipDigits(s, i, len, IsWideDigit, 2);
  const unsigned int after_wide_sep = SkipSeparator(s, i, len);
  if (after_wide_sep != i) i = SkipDigits(s, after_wide_sep, len, IsWideDigit, 2);
  i = SkipDigits(s, i, len, IsAsciiDigit, 1);
  const unsigned int after_ascii_sep = SkipSeparator(s, i, len);
  if (after_ascii_sep != i) i = SkipDigits(s, after_ascii_sep, len, IsAsciiDigit, 1);
  if (WideCharIn(kPercentSigns, s, i, len)) {
    i += 2;
  } else if (i < len && s[i] == '%') {
    ++i;
  }
  while (WideCharIn(kMagnitudes, s, i, len)) i += 2;
  return i == len;
}

bool Delimiter2DictFormat(char c, char* out) {
  out[0] = c;
  out[1] = '\0';
  const char* hit = c == '\0' ? nullptr : strchr(kAsciiDelimiters, c);
  if (hit == nullptr) return false;
  strcpy(out, kWideDelimiters[hit - kAsciiDelimiters]);
  return true;
}

int BinarySearch(const char* key, const char** array, int count) {
  int low = 0;
  int high = count - 1;
  while (low <= high) {
    const int mid = low + (high - low) / 2;
    const int cmp = strcasecmp(array[mid], key);
    if (cmp == 0) return mid;
    if (cmp < 0) {
      low = mid + 1;
    } else {
      high = mid - 1;
    }
  }
  return -1;
}
