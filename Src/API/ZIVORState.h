// ZIVORState.h: the process-wide state behind the exported functions.
//
// ZIVOR_Init fills it, the exported functions read it and ZIVOR_Exit takes it
// down again. The shared resources are loaded once and afterwards only read,
// so any number of analysis instances use them at once; they are created with
// new and deleted by ZIVOR_Exit.
//
// Locks: g_hWoker guards g_vecWorker, g_mutex guards the slot table
// (g_vecZIVOR, g_nCopyMemSize); when both are held g_hWoker is taken first.
// The initialised flag, the workers' availability flags and the tag-map
// level are atomics and need no lock.
#ifndef ZIVOR_API_ZIVORSTATE_H_
#define ZIVOR_API_ZIVORSTATE_H_

#include <pthread.h>

#include <atomic>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "Utility/BinaryIO.h"

class CBigram;
class CCharModel;
class CCharset;
class CCodeTran;
class CContextStat;
class CFSA;
class CMainSystem;
class CPDAT;
class CPlaceModel;
class CPOS;
class CPOSmap;
class CRoleGate;
class CTransliteration;
class CTrie;
class CUnigram;
class CZIVOR;

// Number of tag maps (levels 0 to 3) in g_ppPOSmap.
constexpr int kPOSmapCount = 4;
// Slots the instance table starts with and grows by.
constexpr unsigned int kSlotStep = 5;

extern std::atomic<bool> g_bActive;  // between a successful Init and Exit
extern CMainSystem* g_pZIVOR;        // the main instance, also in slot 0
extern CMainSystem** g_vecZIVOR;     // instance slots (malloc/realloc); null = free
extern unsigned int g_nCopyMemSize;  // number of slots in g_vecZIVOR
extern std::vector<std::unique_ptr<CZIVOR>> g_vecWorker;  // creation order
extern pthread_mutex_t g_mutex;
extern pthread_mutex_t g_hWoker;
extern std::atomic<int> g_nPosMap;  // tag-map level given to new instances

extern CCharset* g_pCharset;
extern CPDAT* g_pCoreDict;
extern CUnigram* g_pUnigram;
extern CBigram* g_pBiDict;
extern CTrie* g_pUserDict;
extern CPDAT* g_pFieldDict;
extern CPDAT* g_pGranDict;
extern CPOS* g_pCorePOS;
extern CPOS* g_pFieldPOS;
extern CPOS* g_pGranPOS;
extern CPOSmap** g_ppPOSmap;  // kPOSmapCount maps, or null
extern CContextStat* g_pPOSContext;
extern CPOS* g_pPersonRole;
extern CContextStat* g_pPersonContext;
extern CFSA* g_pPersonFSA;
extern std::unique_ptr<CRoleGate> g_pPersonGate;  // with the three above
extern CTransliteration* g_pTransliteration;  // null when off or not loaded
extern CPlaceModel* g_pPlaceModel;            // null when off or not loaded
extern CCharModel* g_pCharModel;              // null when off or not loaded
extern CCodeTran* g_pCodeTranslator;  // null when the caller's encoding is GBK
extern FilePtr g_fpNewWord;           // the new-word log "NewWord.lst"

// Logs that an exported call stopped on an exception; never throws itself.
void LogException(const char* sCall, const char* sWhat) noexcept;

// Runs the body of the exported call sCall and returns its value. A C++
// exception from inside (memory running out while a result is copied, say)
// is logged and gives `failure` instead: no exception leaves the library.
template <class Result, class Body>
Result Guarded(const char* sCall, Result failure, Body&& body) noexcept {
  try {
    return body();
  } catch (const std::exception& e) {
    LogException(sCall, e.what());
  } catch (...) {
    LogException(sCall, "unknown exception");
  }
  return failure;
}

// A text argument in the analysis's encoding: converted to GBK when the
// caller's encoding is another (null reads as empty).
std::string InternalText(const char* sText);

// Creates an analysis instance over the shared resources.
CMainSystem* NewMainSystem();

// Delete the shared resources loaded by ZIVOR_Init and the code translator;
// every pointer becomes null (null ones are skipped).
void DeleteSharedResources();
void DeleteCodeTranslator();

// Analyses read the user dictionary while holding g_userDictLock shared; the
// maintenance calls replace or change it holding it exclusively. Writers are
// preferred, so a stream of analyses cannot hold maintenance off for ever.
extern pthread_rwlock_t g_userDictLock;

// Holds g_userDictLock for the scope, shared or exclusive.
template <bool kExclusive>
class UserDictHold {
 public:
  UserDictHold() {
    if (kExclusive) {
      pthread_rwlock_wrlock(&g_userDictLock);
    } else {
      pthread_rwlock_rdlock(&g_userDictLock);
    }
  }
  ~UserDictHold() { pthread_rwlock_unlock(&g_userDictLock); }
  UserDictHold(const UserDictHold&) = delete;
  UserDictHold& operator=(const UserDictHold&) = delete;
};
using UserDictReader = UserDictHold<false>;
using UserDictWriter = UserDictHold<true>;

// Points the main instance and every pooled instance at the dictionary.
void PointInstancesAt(CTrie* pUserDict);
// Drops the user dictionary and every one retired by a failed save.
void DeleteUserDicts();

// Holds a POSIX mutex for the scope.
class PoolLock {
 public:
  explicit PoolLock(pthread_mutex_t* mutex) : mutex_(mutex) { pthread_mutex_lock(mutex_); }
  ~PoolLock() { pthread_mutex_unlock(mutex_); }
  PoolLock(const PoolLock&) = delete;
  PoolLock& operator=(const PoolLock&) = delete;

 private:
  pthread_mutex_t* mutex_;
};

#endif  // ZIVOR_API_ZIVORSTATE_H_
