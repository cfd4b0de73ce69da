// global_linux.h: whole-file reading, line splitting, configuration values
// and the dated log file.
//
// Plain functions over NUL-terminated byte strings and FILE*; none keeps
// state, and all are safe to call from several threads.
#ifndef ZIVOR_UTILITY_GLOBAL_LINUX_H_
#define ZIVOR_UTILITY_GLOBAL_LINUX_H_

#include <cstddef>
#include <cstdio>
#include <string>

// Capacity callers give GetXMLItemValue for the value.
constexpr size_t kXMLValueSize = 1000;

// Copies the text between "KEY>" and the next "</KEY" in sLine into sValue
// (the rest of the line when no closing element follows). False, with an
// empty value, when "KEY>" does not occur. The value is cut to fit
// nValueSize bytes including the terminating NUL.
bool GetXMLItemValue(const char* sLine, const char* sItemName, char* sValue,
                     size_t nValueSize = kXMLValueSize);

// Reads a whole file into a new[]-allocated, NUL-terminated buffer stored at
// *pBuffer (release with delete[]). Returns the file size; 0 and no buffer
// when the file cannot be opened or measured.
int ReadFile(const char* sFilename, char** pBuffer);

// Number of fgets reads (1000-byte buffer) the stream gives; rewinds before
// and after.
int GetFileLinesCount(FILE* fp);

// Reads the next line of fp without its line feed into buf, keeping at most
// size - 1 bytes (NUL-terminated); the tail of a longer line is skipped so it
// never reads as a line of its own. False at the end of the file.
bool ReadLine(FILE* fp, char* buf, size_t size);
// The same into a string, keeping at most nMaxBytes - 1 bytes.
bool ReadLine(FILE* fp, std::string* line, size_t nMaxBytes);

// Returns the next non-blank line at or after pCur, terminated in place; the
// replaced line-end character is saved at *chSep and *pNextRet points at it
// (null after the last line).
char* StrLine(char* pCur, char** pNextRet, char* chSep);

// Lower-cases 'A'..'Z' in place and returns its argument.
char* strlwr(char* _src);

// Appends "[YYYY-mm-dd HH:MM:SS] content" to YYYYmmdd.log in sFilePath (a
// directory; null: the current directory). If the log cannot be opened the
// line goes to standard output with a note.
void WriteLog(const std::string& content, const char* sFilePath);

// Path of the log file WriteLog writes to today for the directory sFilePath.
std::string LogFileName(const char* sFilePath);

#endif  // ZIVOR_UTILITY_GLOBAL_LINUX_H_
