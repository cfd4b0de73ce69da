// ZIVORKeyWord.cpp: the exported keyword, new-word and fingerprint calls.
//
// The one-shot calls run on a pooled instance with a finder of their own; the
// collection calls (ZIVOR_NWI_*) and the fingerprint use the main instance.
#include <cstdio>

#include "zivor/ZIVOR.h"
#include "API/ZIVORState.h"
#include "API/ZIVORWorker.h"
#include "System/MainSystem.h"

namespace {

// The member of CZIVOR that a one-shot call forwards to.
using OneShot = const char* (CZIVOR::*)(const char*, int, bool);

const char* RunPooled(const char* sName, OneShot call, const char* sArgument, int nMaxKeyLimit,
                      bool bWeightOut, TextKind kind) {
  return Guarded<const char*>(sName, nullptr, [&]() -> const char* {
    if (!g_bActive) return nullptr;
    WorkerLease lease;
    if (lease.get() == nullptr) return nullptr;
    return KeepText((lease.get()->*call)(sArgument, nMaxKeyLimit, bWeightOut), kind);
  });
}

// Appends one result line to the new-word log, when it is open.
void LogNewWords(const char* sResult) {
  if (sResult == nullptr || !g_fpNewWord) return;
  fprintf(g_fpNewWord.get(), "%s\n", sResult);
  fflush(g_fpNewWord.get());
}

}  // namespace

const char* ZIVOR_GetKeyWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut) {
  return RunPooled(__func__, &CZIVOR::GetKeyWords, sLine, nMaxKeyLimit, bWeightOut, TextKind::kKeyWords);
}

const char* ZIVOR_GetFileKeyWords(const char* sFilename, int nMaxKeyLimit, bool bWeightOut) {
  return RunPooled(__func__, &CZIVOR::GetFileKeyWords, sFilename, nMaxKeyLimit, bWeightOut,
                   TextKind::kKeyWords);
}

const char* ZIVOR_GetNewWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut) {
  const char* result =
      RunPooled(__func__, &CZIVOR::GetNewWords, sLine, nMaxKeyLimit, bWeightOut, TextKind::kNewWords);
  LogNewWords(result);
  return result;
}

const char* ZIVOR_GetFileNewWords(const char* sFilename, int nMaxKeyLimit, bool bWeightOut) {
  return RunPooled(__func__, &CZIVOR::GetFileNewWords, sFilename, nMaxKeyLimit, bWeightOut,
                   TextKind::kNewWords);
}

unsigned long ZIVOR_FingerPrint(const char* sLine) {
  return Guarded(__func__, 0ul, [&] {
    if (!g_bActive || g_pZIVOR == nullptr) return 0ul;
    return g_pZIVOR->GetFinger(sLine);
  });
}

int ZIVOR_NWI_Start() {
  return Guarded(__func__, 0, [] {
    if (!g_bActive) return 0;
    return g_pZIVOR->NWI_Start() ? 1 : 0;
  });
}

int ZIVOR_NWI_AddFile(const char* sFilename) {
  return Guarded(__func__, 0, [&] {
    if (!g_bActive) return 0;
    return g_pZIVOR->NWI_AddFile(sFilename);
  });
}

int ZIVOR_NWI_AddMem(const char* sText) {
  return Guarded(__func__, 0, [&] {
    if (!g_bActive) return 0;
    return g_pZIVOR->NWI_AddMem(sText) != 0 ? 1 : 0;
  });
}

int ZIVOR_NWI_Complete() {
  return Guarded(__func__, 0, [] {
    if (!g_bActive) return 0;
    return g_pZIVOR->NWI_Complete() ? 1 : 0;
  });
}

const char* ZIVOR_NWI_GetResult(bool bWeightOut) {
  return Guarded<const char*>(__func__, nullptr, [&]() -> const char* {
    if (!g_bActive) return nullptr;
    return g_pZIVOR->NWI_GetResult(bWeightOut);
  });
}
