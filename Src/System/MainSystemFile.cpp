// MainSystemFile.cpp: analysis of a whole file and the dictionary queries.
#include <algorithm>
#include <cstring>
#include <ctime>

#include "System/MainSystem.h"
#include "Utility/Bigram.h"
#include "Utility/BinaryIO.h"
#include "Utility/PDAT.h"
#include "Utility/Unigram.h"
#include "Utility/global_linux.h"

namespace {

// A source line is analysed in pieces of at most this many bytes minus one.
constexpr int kFilePieceBytes = 10240;

double LogOpenFailure(const char* path) {
  WriteLog("Error read file", nullptr);
  WriteLog(path != nullptr ? path : "", nullptr);
  return 0.0;
}

}  // namespace

double CMainSystem::FileProcess(const char* sSrcFilename, const char* sDsnFilename,
                                int bPOStagged) {
  // Both are opened before either is tested: the destination is created or
  // emptied even when the source is missing.
  const FilePtr source = OpenFile(sSrcFilename, "r");
  const FilePtr dest = OpenFile(sDsnFilename, "w");
  if (!source) return LogOpenFailure(sSrcFilename);
  if (!dest) return LogOpenFailure(sDsnFilename);
  // The whole file is one call: no other call on the instance can replace a
  // piece's result before it is written.
  Busy busy(this);
  char piece[kFilePieceBytes + kMaxCharBytes - 1];
  const TextLayout layout = CallerLayout();
  std::string result;
  double ticks = 0;
  long long bytes = 0;
  for (int length; (length = ReadFilePiece(source.get(), piece, kFilePieceBytes, layout)) > 0;) {
    ticks += ProcessPiece(piece, length, bPOStagged, &result);
    if (m_bFailed) return 0.0;
    fprintf(dest.get(), "%s\n", result.c_str());
    bytes += length;
  }
  // A directory opens but does not read; a disk may fail on either side.
  if (ferror(source.get())) return LogOpenFailure(sSrcFilename);
  if (fflush(dest.get()) != 0 || ferror(dest.get())) return LogOpenFailure(sDsnFilename);
  if (bytes == 0) return 0.0;
  // Whatever the clock's resolution, an analysis takes some time.
  const double seconds = std::max(ticks, 1.0) / CLOCKS_PER_SEC;
  return static_cast<double>(bytes) / seconds / 1000;
}

// Analyses one piece of a file; the parts between NUL bytes are analysed one
// after the other and their results joined. Returns the clock ticks spent.
double CMainSystem::ProcessPiece(const char* pPiece, int nLen, int bPOStagged,
                                 std::string* pResult) {
  pResult->clear();
  double ticks = 0;
  ForEachPart(pPiece, nLen, [&](const char* part) {
    const clock_t begin = clock();
    const char* text = RunProcess(part, bPOStagged, true);
    ticks += static_cast<double>(clock() - begin);
    pResult->append(text);
    return true;
  });
  return ticks;
}

int CMainSystem::ReadFilePiece(FILE* fp, char* buffer, int nCapacity, TextLayout layout) {
  int length = 0;
  int pending = 0;  // bytes still due to complete the character being read
  for (;;) {
    if (length >= nCapacity - 1 && (pending == 0 || length >= nCapacity + kMaxCharBytes - 2)) {
      break;
    }
    const int c = getc(fp);
    if (c == EOF) break;
    buffer[length++] = static_cast<char>(c);
    if (c == '\n') break;
    const auto byte = static_cast<unsigned char>(c);
    pending = pending > 0 && IsTrailByte(layout, byte) ? pending - 1
                                                       : CharLengthFromLead(layout, byte) - 1;
  }
  buffer[length] = '\0';
  return length;
}

bool CMainSystem::ForEachPart(const char* pPiece, int nLen,
                              const std::function<bool(const char*)>& visit) {
  for (int pos = 0; pos < nLen;) {
    const char* part = pPiece + pos;
    const int partLen = static_cast<int>(strlen(part));
    if (partLen > 0 && !visit(part)) return false;
    pos += partLen + 1;
  }
  return true;
}

bool CMainSystem::FileProcessEx(const char* /*sSrcFilename*/, const char* /*sDsnFilename*/) {
  return true;
}

bool CMainSystem::IsWord(const char* sWord) { return m_wordStats.IsWord(sWord); }

double CMainSystem::GetUniProb(int nHandle) { return m_wordStats.GetUniProb(nHandle); }

double CMainSystem::GetUniProb(const char* sWord) { return m_wordStats.GetUniProb(sWord); }

bool CMainSystem::IsFreqAssociate(const char* sPrevWord, const char* sNextWord) {
  return m_wordStats.IsFreqAssociate(sPrevWord, sNextWord);
}
