// MainSystem.cpp: construction, the processing drivers and the busy guard.
#include "System/MainSystem.h"

#include <cstdlib>

#include "Segment/PreProcess.h"
#include "Segment/Segment.h"
#include "Utility/global_linux.h"

CMainSystem::CMainSystem(CCharset* pCharset, CPDAT* pCoreDict, CUnigram* pUnigram,
                         CBigram* pBiDict, CTrie* pUserDict, CPDAT* pFieldDict,
                         CPDAT* pGranDict, CPOS* pCorePOS, CPOS* pFieldPOS,
                         CPOS* pGranPOS, CPOSmap** ppPOSmap,
                         CContextStat* pPOSContext, CPOS* pPersonRole,
                         CContextStat* pPersonContext, CFSA* pFSA,
                         CCodeTran* pCodeTrans)
    : m_pUnigram(pUnigram), m_pCoreDict(pCoreDict), m_pCharset(pCharset),
      m_pBiDict(pBiDict), m_pUserDict(pUserDict), m_pFieldDict(pFieldDict),
      m_pGranDict(pGranDict), m_pCorePOS(pCorePOS), m_pFieldPOS(pFieldPOS),
      m_pGranPOS(pGranPOS), m_ppPOSmap(ppPOSmap), m_pPOSContext(pPOSContext),
      m_pPersonRole(pPersonRole), m_pPersonContext(pPersonContext),
      m_pPersonFSA(pFSA), m_pCodeTranslator(pCodeTrans) {
  pthread_mutex_init(&m_mutex, nullptr);
  pthread_cond_init(&m_idle, nullptr);
  m_pPreProcess = new CPreProcess(m_pCharset, m_pCoreDict, m_pUserDict);
  m_pSegmenter = new CSegment(m_pCoreDict, m_pUnigram, m_pBiDict);
  AllocateBuffers();
}

CMainSystem::~CMainSystem() {
  FreeBuffers();
  delete m_pPreProcess;
  delete m_pSegmenter;
  pthread_cond_destroy(&m_idle);
  pthread_mutex_destroy(&m_mutex);
}

void CMainSystem::AllocateBuffers() {}
void CMainSystem::FreeBuffers() {}
void CMainSystem::BeginProcessing() {}
void CMainSystem::EndProcessing() {}

const char* CMainSystem::Process(const char*, int, bool) { return ""; }
int CMainSystem::ProcessA(const char*, std::string&, bool, bool, bool) { return 0; }
int CMainSystem::ProcessAtomEx(const char*, bool, bool, bool) { return 0; }
int CMainSystem::ProcessAtom(const char*, bool, bool) { return 0; }
result_t* CMainSystem::GetResult(int* p_nCount) {
  *p_nCount = 0;
  return nullptr;
}
bool CMainSystem::SetFieldPOS(CPOS* pFieldPOS) {
  m_pFieldPOS = pFieldPOS;
  return true;
}
int CMainSystem::Output(const char*, word_t*, int, int, int, bool) { return 0; }
int CMainSystem::SetOutput(const char*, int, int, int, int, bool) { return 0; }
bool CMainSystem::SetPOSmap(int nPOSmap) {
  if (nPOSmap < 0 || nPOSmap > 3) return false;
  m_nPOSmap = nPOSmap;
  return true;
}
int CMainSystem::GetPosmap() { return m_nPOSmap; }
int CMainSystem::FieldDic(const char*, word_t*, int, word_t*, int& nWordCountDest,
                          CPDAT*, CPOS*, int) {
  nWordCountDest = 0;
  return 0;
}
double CMainSystem::FileProcess(const char*, const char*, int) { return 0.0; }
bool CMainSystem::FileProcessEx(const char*, const char*) { return true; }
bool CMainSystem::IsWord(const char*) { return false; }
double CMainSystem::GetUniProb(int) { return 0.0; }
double CMainSystem::GetUniProb(const char*) { return 0.0; }
bool CMainSystem::IsFreqAssociate(const char*, const char*) { return false; }
