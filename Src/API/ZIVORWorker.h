// ZIVORWorker.h: a worker of the instance pool.
//
// A CZIVOR owns one slot of the instance table, holding the analysis
// instance (CMainSystem) it forwards calls to, and hands that instance to one
// caller at a time: GetActiveInstance claims an idle worker (or creates one)
// and the caller returns it with SetAvailable(true). The pool therefore grows
// to the greatest number of calls ever under way at once; workers live until
// ZIVOR_Exit.
#ifndef ZIVOR_API_ZIVORWORKER_H_
#define ZIVOR_API_ZIVORWORKER_H_

#include <atomic>
#include <climits>

#include "zivor/ZIVOR.h"
#include "API/ZIVORState.h"

class CMainSystem;

class CZIVOR {
 public:
  // Creates the worker's instance and puts it in the first free slot,
  // growing the table by 5 slots when all are taken. Does nothing when the
  // library is not initialised (the worker then has no instance). The new
  // worker is available.
  CZIVOR();
  // Deletes the worker's instance and frees its slot while the library is
  // initialised; afterwards (during ZIVOR_Exit) it leaves both alone.
  ~CZIVOR();
  CZIVOR(const CZIVOR&) = delete;
  CZIVOR& operator=(const CZIVOR&) = delete;

  bool IsAvailable() const { return m_bAvailable.load(std::memory_order_acquire); }
  // Stores the flag and returns it.
  bool SetAvailable(bool bAvailable);
  // Takes the worker if it is available: true for exactly one of several
  // callers racing for it.
  bool Claim();

  // Forwarders to the slot's instance; each returns the entry point's
  // failure value when the worker has no instance.
  const char* ParagraphProcess(const char* sParagraph, int bPOStagged);
  const result_t* ParagraphProcessA(const char* sParagraph, int* pResultCount, bool bUserDict);
  int GetParagraphProcessAWordCount(const char* sParagraph);
  void ParagraphProcessAW(int nCount, result_t* result);
  double FileProcess(const char* sSourceFilename, const char* sResultFilename, int bPOStagged);
  const char* GetKeyWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut);
  const char* GetFileKeyWords(const char* sFilename, int nMaxKeyLimit, bool bWeightOut);
  const char* GetNewWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut);
  const char* GetFileNewWords(const char* sFilename, int nMaxKeyLimit, bool bWeightOut);
  int GetSafeCut(const char* sText, int nLength);

 private:
  // The instance in this worker's slot, or null.
  CMainSystem* Instance() const;
  // Runs a keyword or new-word method of the instance; null without one.
  using RankMethod = const char* (CMainSystem::*)(const char*, int, bool);
  const char* Rank(RankMethod method, const char* sArgument, int nMaxKeyLimit, bool bWeightOut);

  unsigned int m_nHandle = UINT_MAX;  // slot of the instance in g_vecZIVOR
  std::atomic<bool> m_bAvailable{false};
};

// Claims an idle worker, creating one when none is idle; null only when
// memory runs out. The caller returns it with SetAvailable(true).
CZIVOR* GetActiveInstance();

// A worker claimed for the duration of one pooled call, with the user
// dictionary held for reading; null when none can be had.
class WorkerLease {
 public:
  WorkerLease();
  ~WorkerLease();
  WorkerLease(const WorkerLease&) = delete;
  WorkerLease& operator=(const WorkerLease&) = delete;

  CZIVOR* get() const { return worker_; }

 private:
  UserDictReader reader_;
  CZIVOR* worker_;
};

// The pooled calls hand their worker back before they return, so the next
// caller to claim it may overwrite the instance's result while this caller
// is still reading it. Each thread therefore gets its result in a buffer of
// its own, valid until the same thread's next call of the same kind: for one
// thread that is exactly the life of the instance's buffer. Null stays null.
enum class TextKind { kAnalysis, kKeyWords, kNewWords, kCount };
const char* KeepText(const char* text, TextKind kind);
const result_t* KeepRecords(const result_t* records, int count);

// Runs the count/copy pair on an instance: copies its last result into
// `result` when nCount equals that result's record count.
void CopyLastResult(CMainSystem* pSystem, int nCount, result_t* result);

#endif  // ZIVOR_API_ZIVORWORKER_H_
