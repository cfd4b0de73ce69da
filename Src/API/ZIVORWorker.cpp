#include "API/ZIVORWorker.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "API/ZIVORState.h"
#include "System/MainSystem.h"

namespace {

// Puts the instance in the first free slot, growing the table by kSlotStep
// slots when every slot is taken. Returns the slot, or UINT_MAX when the
// table cannot grow. Called with g_mutex held.
unsigned int TakeSlot(CMainSystem* pSystem) {
  for (unsigned int i = 0; i < g_nCopyMemSize; ++i) {
    if (g_vecZIVOR[i] == nullptr) {
      g_vecZIVOR[i] = pSystem;
      return i;
    }
  }
  const unsigned int slot = g_nCopyMemSize;
  const unsigned int size = g_nCopyMemSize + kSlotStep;
  void* grown = realloc(g_vecZIVOR, size * sizeof(CMainSystem*));
  if (grown == nullptr) return UINT_MAX;
  g_vecZIVOR = static_cast<CMainSystem**>(grown);
  g_nCopyMemSize = size;
  g_vecZIVOR[slot] = pSystem;
  for (unsigned int i = slot + 1; i < size; ++i) g_vecZIVOR[i] = nullptr;
  return slot;
}

}  // namespace

CZIVOR::CZIVOR() {
  if (!g_bActive) return;
  CMainSystem* system = NewMainSystem();
  if (system == nullptr) return;
  system->SetPOSmap(g_nPosMap);
  {
    PoolLock lock(&g_mutex);
    m_nHandle = TakeSlot(system);
  }
  if (m_nHandle == UINT_MAX) {
    delete system;
    return;
  }
  m_bAvailable = true;
}

CZIVOR::~CZIVOR() {
  if (!g_bActive) return;
  PoolLock lock(&g_mutex);
  if (m_nHandle < g_nCopyMemSize) {
    delete g_vecZIVOR[m_nHandle];
    g_vecZIVOR[m_nHandle] = nullptr;
  }
}

bool CZIVOR::SetAvailable(bool bAvailable) {
  m_bAvailable.store(bAvailable, std::memory_order_release);
  return bAvailable;
}

bool CZIVOR::Claim() {
  bool expected = true;
  return m_bAvailable.compare_exchange_strong(expected, false, std::memory_order_acquire);
}

CMainSystem* CZIVOR::Instance() const {
  PoolLock lock(&g_mutex);
  return m_nHandle < g_nCopyMemSize ? g_vecZIVOR[m_nHandle] : nullptr;
}

const char* CZIVOR::ParagraphProcess(const char* sParagraph, int bPOStagged) {
  CMainSystem* system = Instance();
  if (system == nullptr) return nullptr;
  return system->Process(sParagraph, bPOStagged, true);
}

const result_t* CZIVOR::ParagraphProcessA(const char* sParagraph, int* pResultCount,
                                          bool bUserDict) {
  *pResultCount = 0;
  CMainSystem* system = Instance();
  if (system == nullptr) return nullptr;
  std::string translated;
  system->ProcessA(sParagraph, translated, true, bUserDict, false);
  // The worker is this caller's until it is handed back, so the flag is the
  // flag of this call.
  if (system->Failed()) return nullptr;
  return system->GetResult(pResultCount);
}

int CZIVOR::GetParagraphProcessAWordCount(const char* sParagraph) {
  CMainSystem* system = Instance();
  if (system == nullptr) return 0;
  std::string translated;
  return system->ProcessA(sParagraph, translated, true, true, false);
}

void CZIVOR::ParagraphProcessAW(int nCount, result_t* result) {
  if (!g_bActive) return;
  CopyLastResult(Instance(), nCount, result);
}

double CZIVOR::FileProcess(const char* sSourceFilename, const char* sResultFilename,
                           int bPOStagged) {
  CMainSystem* system = Instance();
  if (system == nullptr) return 0.0;
  return system->FileProcess(sSourceFilename, sResultFilename, bPOStagged);
}

const char* CZIVOR::Rank(RankMethod method, const char* sArgument, int nMaxKeyLimit,
                         bool bWeightOut) {
  CMainSystem* system = Instance();
  return system != nullptr ? (system->*method)(sArgument, nMaxKeyLimit, bWeightOut) : nullptr;
}

const char* CZIVOR::GetKeyWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut) {
  return Rank(&CMainSystem::GetKeyWords, sLine, nMaxKeyLimit, bWeightOut);
}

const char* CZIVOR::GetFileKeyWords(const char* sFilename, int nMaxKeyLimit, bool bWeightOut) {
  return Rank(&CMainSystem::GetFileKeyWords, sFilename, nMaxKeyLimit, bWeightOut);
}

const char* CZIVOR::GetNewWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut) {
  return Rank(&CMainSystem::GetNewWords, sLine, nMaxKeyLimit, bWeightOut);
}

const char* CZIVOR::GetFileNewWords(const char* sFilename, int nMaxKeyLimit, bool bWeightOut) {
  return Rank(&CMainSystem::GetFileNewWords, sFilename, nMaxKeyLimit, bWeightOut);
}

int CZIVOR::GetSafeCut(const char* sText, int nLength) {
  CMainSystem* system = Instance();
  return system != nullptr ? system->GetSafeCut(sText, nLength) : 0;
}

WorkerLease::WorkerLease() : worker_(GetActiveInstance()) {}

WorkerLease::~WorkerLease() {
  if (worker_ != nullptr) worker_->SetAvailable(true);
}

const char* KeepText(const char* text, TextKind kind) {
  if (text == nullptr) return nullptr;
  thread_local std::string kept[static_cast<int>(TextKind::kCount)];
  std::string& buffer = kept[static_cast<int>(kind)];
  buffer.assign(text);
  return buffer.c_str();
}

const result_t* KeepRecords(const result_t* records, int count) {
  if (records == nullptr) return nullptr;
  thread_local std::vector<result_t> kept(1);  // never empty: data() is not null
  kept.assign(records, records + count);
  return kept.data();
}

CZIVOR* GetActiveInstance() {
  {
    PoolLock lock(&g_hWoker);
    for (const auto& worker : g_vecWorker) {
      if (worker != nullptr && worker->Claim()) return worker.get();
    }
  }
  // Building an instance takes a while; other callers keep claiming idle
  // workers meanwhile.
  std::unique_ptr<CZIVOR> worker(new (std::nothrow) CZIVOR);
  if (worker == nullptr) return nullptr;
  worker->SetAvailable(false);
  CZIVOR* claimed = worker.get();
  PoolLock lock(&g_hWoker);
  g_vecWorker.push_back(std::move(worker));
  return claimed;
}

void CopyLastResult(CMainSystem* pSystem, int nCount, result_t* result) {
  if (pSystem == nullptr || result == nullptr) return;
  int count = 0;
  const result_t* last = pSystem->GetResult(&count);
  if (nCount != count || count <= 0 || last == nullptr) return;
  memcpy(result, last, static_cast<size_t>(count) * sizeof(result_t));
}
