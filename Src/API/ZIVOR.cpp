// ZIVOR.cpp: the process-wide state, the exported analysis functions and
// ZIVOR_Exit. Initialisation is in ZIVORInit.cpp.
#include "zivor/ZIVOR.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "API/ZIVORState.h"
#include "API/ZIVORWorker.h"
#include "System/MainSystem.h"
#include "Tagger/RoleGate.h"
#include "Utility/CodeTran.h"
#include "Utility/Global.h"
#include "Utility/global_linux.h"

std::atomic<bool> g_bActive{false};
CMainSystem* g_pZIVOR = nullptr;
CMainSystem** g_vecZIVOR = nullptr;
unsigned int g_nCopyMemSize = 0;
std::vector<std::unique_ptr<CZIVOR>> g_vecWorker;
pthread_mutex_t g_mutex;
pthread_mutex_t g_hWoker;
std::atomic<int> g_nPosMap{0};

CCharset* g_pCharset = nullptr;
CPDAT* g_pCoreDict = nullptr;
CUnigram* g_pUnigram = nullptr;
CBigram* g_pBiDict = nullptr;
CTrie* g_pUserDict = nullptr;
CPDAT* g_pFieldDict = nullptr;
CPDAT* g_pGranDict = nullptr;
CPOS* g_pCorePOS = nullptr;
CPOS* g_pFieldPOS = nullptr;
CPOS* g_pGranPOS = nullptr;
CPOSmap** g_ppPOSmap = nullptr;
CContextStat* g_pPOSContext = nullptr;
CPOS* g_pPersonRole = nullptr;
CContextStat* g_pPersonContext = nullptr;
CFSA* g_pPersonFSA = nullptr;
std::unique_ptr<CRoleGate> g_pPersonGate;
CTransliteration* g_pTransliteration = nullptr;
CPlaceModel* g_pPlaceModel = nullptr;
CCharModel* g_pCharModel = nullptr;
CCodeTran* g_pCodeTranslator = nullptr;
FilePtr g_fpNewWord;
pthread_rwlock_t g_userDictLock = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;

namespace {

// Text arguments may be null; the instances see an empty text instead.
const char* TextOrEmpty(const char* text) { return text != nullptr ? text : ""; }

// Deletes every instance (the main one included), then the table itself.
void DeleteInstances() {
  for (unsigned int i = 0; i < g_nCopyMemSize; ++i) {
    delete g_vecZIVOR[i];
    g_vecZIVOR[i] = nullptr;
  }
  free(g_vecZIVOR);
  g_vecZIVOR = nullptr;
  g_nCopyMemSize = 0;
  g_pZIVOR = nullptr;
}

}  // namespace

std::string InternalText(const char* sText) {
  const char* text = TextOrEmpty(sText);
  if (g_pCodeTranslator == nullptr) return text;
  std::string gbk;
  std::vector<int> offsets;
  g_pCodeTranslator->ToGBK(text, strlen(text), &gbk, &offsets);
  return gbk;
}

CMainSystem* NewMainSystem() {
  CMainSystem* system = new (std::nothrow)
      CMainSystem(g_pCharset, g_pCoreDict, g_pUnigram, g_pBiDict, g_pUserDict, g_pFieldDict,
                  g_pGranDict, g_pCorePOS, g_pFieldPOS, g_pGranPOS, g_ppPOSmap, g_pPOSContext,
                  g_pPersonRole, g_pPersonContext, g_pPersonFSA, g_pCodeTranslator);
  if (system != nullptr) {
    system->SetTransliteration(g_pTransliteration);
    system->SetPlaceModel(g_pPlaceModel);
    system->SetPersonGate(g_pPersonGate.get());
    system->SetCharModel(g_pCharModel);
  }
  return system;
}

void LogException(const char* sCall, const char* sWhat) noexcept {
  try {
    WriteLog(std::string(sCall) + " stopped: " + sWhat, nullptr);
  } catch (...) {  // nothing more can be done when even the log line fails
  }
}

const char* ZIVOR_ParagraphProcess(const char* sParagraph, int bPOStagged) {
  return Guarded<const char*>(__func__, nullptr, [&]() -> const char* {
    if (!g_bActive) return nullptr;
    WorkerLease lease;
    if (lease.get() == nullptr) return nullptr;
    return KeepText(lease.get()->ParagraphProcess(TextOrEmpty(sParagraph), bPOStagged),
                    TextKind::kAnalysis);
  });
}

const result_t* ZIVOR_ParagraphProcessA(const char* sParagraph, int* pResultCount,
                                        bool bUserDict) {
  int ignored = 0;
  int* count = pResultCount != nullptr ? pResultCount : &ignored;
  *count = 0;
  const result_t* records = Guarded<const result_t*>(__func__, nullptr, [&]() -> const result_t* {
    if (!g_bActive) return nullptr;
    WorkerLease lease;
    if (lease.get() == nullptr) return nullptr;
    const result_t* kept =
        lease.get()->ParagraphProcessA(TextOrEmpty(sParagraph), count, bUserDict);
    return KeepRecords(kept, *count);
  });
  if (records == nullptr) *count = 0;
  return records;
}

int ZIVOR_GetParagraphProcessAWordCount(const char* sParagraph) {
  return Guarded(__func__, 0, [&] {
    if (!g_bActive || g_pZIVOR == nullptr) return 0;
    UserDictReader reader;
    std::string translated;
    return g_pZIVOR->ProcessA(TextOrEmpty(sParagraph), translated, true, true, false);
  });
}

void ZIVOR_ParagraphProcessAW(int nCount, result_t* result) {
  // The main instance exists exactly while the library is initialised.
  CopyLastResult(g_pZIVOR, nCount, result);
}

double ZIVOR_FileProcess(const char* sSourceFilename, const char* sResultFilename,
                         int bPOStagged) {
  return Guarded(__func__, 0.0, [&] {
    if (!g_bActive || sSourceFilename == nullptr || sResultFilename == nullptr) return 0.0;
    WorkerLease lease;
    if (lease.get() == nullptr) return 0.0;
    return lease.get()->FileProcess(sSourceFilename, sResultFilename, bPOStagged);
  });
}

int ZIVOR_SetPOSmap(int nPOSmap) {
  if (!g_bActive || nPOSmap < 0 || nPOSmap > 3) return 0;
  g_nPosMap = nPOSmap;
  if (!g_bPOSTagger) return 0;
  g_pZIVOR->SetPOSmap(nPOSmap);
  PoolLock lock(&g_mutex);
  for (unsigned int i = 0; i < g_nCopyMemSize; ++i) {
    if (g_vecZIVOR[i] != nullptr) g_vecZIVOR[i]->SetPOSmap(nPOSmap);
  }
  return 0;
}

bool ZIVOR_IsWord(const char* sWord) {
  return Guarded(__func__, false, [&] {
    if (!g_bActive || g_pZIVOR == nullptr) return false;
    return g_pZIVOR->IsWord(InternalText(sWord).c_str());
  });
}

double ZIVOR_GetUniProb(const char* sWord) {
  return Guarded(__func__, 0.0, [&] {
    if (!g_bActive || g_pZIVOR == nullptr) return 0.0;
    return g_pZIVOR->GetUniProb(InternalText(sWord).c_str());
  });
}

bool ZIVOR_Exit() {
  if (!g_bActive) return false;
  DeleteSharedResources();
  g_bActive = false;
  g_fpNewWord.reset();
  // With the library inactive the workers' destructors leave the slots alone;
  // the instances go with the table.
  g_vecWorker.clear();
  DeleteInstances();
  pthread_mutex_destroy(&g_mutex);
  pthread_mutex_destroy(&g_hWoker);
  DeleteCodeTranslator();
  return true;
}
