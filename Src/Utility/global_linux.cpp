#include "Utility/global_linux.h"

#include <sys/stat.h>

#include <climits>
#include <cstring>
#include <ctime>
#include <new>

#include "Utility/BinaryIO.h"

namespace {

// Patterns are built in a fixed buffer; longer keys never match.
constexpr size_t kPatternSize = 256;

bool IsLineBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

struct tm LocalNow() {
  const time_t now = time(nullptr);
  struct tm local;
  localtime_r(&now, &local);
  return local;
}

std::string Format(const struct tm& when, const char* format) {
  char buf[64];
  strftime(buf, sizeof buf, format, &when);
  return buf;
}

std::string LogFileNameAt(const struct tm& when, const char* sFilePath) {
  const std::string day = Format(when, "%Y%m%d") + ".log";
  if (sFilePath == nullptr) return day;
  return std::string(sFilePath) + "/" + day;
}

// Reads one line, handing at most `keep` of its bytes to `sink`.
template <class Sink>
bool ReadLineInto(FILE* fp, size_t keep, Sink&& sink) {
  int c = getc(fp);
  if (c == EOF) return false;
  for (size_t used = 0; c != EOF && c != '\n'; c = getc(fp)) {
    if (used < keep) {
      sink(static_cast<char>(c));
      ++used;
    }
  }
  return true;
}

}  // namespace

bool ReadLine(FILE* fp, char* buf, size_t size) {
  if (fp == nullptr || buf == nullptr || size == 0) return false;
  size_t used = 0;
  const bool got = ReadLineInto(fp, size - 1, [&](char c) { buf[used++] = c; });
  buf[used] = '\0';
  return got;
}

bool ReadLine(FILE* fp, std::string* line, size_t nMaxBytes) {
  line->clear();
  if (fp == nullptr || nMaxBytes == 0) return false;
  return ReadLineInto(fp, nMaxBytes - 1, [&](char c) { line->push_back(c); });
}

bool GetXMLItemValue(const char* sLine, const char* sItemName, char* sValue,
                     size_t nValueSize) {
  if (sValue != nullptr && nValueSize > 0) sValue[0] = '\0';
  if (sLine == nullptr || sItemName == nullptr || sValue == nullptr || nValueSize == 0) {
    return false;
  }
  char pattern[kPatternSize];
  if (snprintf(pattern, sizeof pattern, "%s>", sItemName) >= static_cast<int>(sizeof pattern)) {
    return false;
  }
  const char* open = strstr(sLine, pattern);
  if (open == nullptr) return false;
  const char* value = open + strlen(pattern);
  snprintf(pattern, sizeof pattern, "</%s", sItemName);
  const char* close = strstr(value, pattern);
  size_t length = close != nullptr ? static_cast<size_t>(close - value) : strlen(value);
  if (length >= nValueSize) length = nValueSize - 1;
  memcpy(sValue, value, length);
  sValue[length] = '\0';
  return true;
}

int ReadFile(const char* sFilename, char** pBuffer) {
  if (sFilename == nullptr || pBuffer == nullptr) return 0;
  FilePtr fp = OpenFile(sFilename, "rb");
  if (!fp) return 0;
  struct stat st;
  if (fstat(fileno(fp.get()), &st) != 0 || st.st_size < 0 || st.st_size >= INT_MAX) return 0;
  const size_t size = static_cast<size_t>(st.st_size);
  char* buffer = new (std::nothrow) char[size + 1];
  if (buffer == nullptr) return 0;
  const size_t got = fread(buffer, 1, size, fp.get());
  buffer[got] = '\0';
  *pBuffer = buffer;
  return static_cast<int>(got);
}

int GetFileLinesCount(FILE* fp) {
  if (fp == nullptr) return 0;
  rewind(fp);
  char line[1000];
  int count = 0;
  while (fgets(line, sizeof line, fp) != nullptr) ++count;
  rewind(fp);
  return count;
}

char* StrLine(char* pCur, char** pNextRet, char* chSep) {
  *chSep = 0;
  *pNextRet = nullptr;
  if (pCur == nullptr) return nullptr;
  while (IsLineBlank(*pCur)) ++pCur;
  if (*pCur == '\0') return nullptr;
  char* end = pCur + strcspn(pCur, "\r\n");
  if (*end == '\0') return pCur;
  *chSep = *end;
  *end = '\0';
  *pNextRet = end;
  return pCur;
}

char* strlwr(char* _src) {
  if (_src == nullptr) return nullptr;
  for (char* p = _src; *p != '\0'; ++p) {
    if (*p >= 'A' && *p <= 'Z') *p = static_cast<char>(*p + 32);
  }
  return _src;
}

std::string LogFileName(const char* sFilePath) { return LogFileNameAt(LocalNow(), sFilePath); }

void WriteLog(const std::string& content, const char* sFilePath) {
  // One clock reading names the file and stamps the line, so a line written
  // at midnight lands in the file of the day its stamp gives.
  const struct tm now = LocalNow();
  const std::string stamp = Format(now, "%Y-%m-%d %H:%M:%S");
  const std::string name = LogFileNameAt(now, sFilePath);
  FilePtr fp = OpenFile(name.c_str(), "ab");
  if (fp) {
    fprintf(fp.get(), "[%s] %s\n", stamp.c_str(), content.c_str());
    return;
  }
  printf("[%s] %s\n", stamp.c_str(), content.c_str());
  printf("Cannot write log file %s!\r\n", name.c_str());
}
