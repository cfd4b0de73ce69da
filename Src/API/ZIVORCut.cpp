// ZIVORCut.cpp: ZIVOR_GetSafeCut, which lets a caller analyse a text of any
// length in pieces of bounded size with the result of the whole.
#include "zivor/ZIVOR.h"
#include "API/ZIVORState.h"
#include "API/ZIVORWorker.h"
#include "System/MainSystem.h"

int ZIVOR_GetSafeCut(const char* sText, int nLength) {
  return Guarded(__func__, 0, [&] {
    if (!g_bActive || sText == nullptr || nLength <= 0) return 0;
    WorkerLease lease;
    return lease.get() != nullptr ? lease.get()->GetSafeCut(sText, nLength) : 0;
  });
}
