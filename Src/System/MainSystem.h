// MainSystem.h: one analysis instance.
//
// CMainSystem runs the whole pipeline over a text: atoms and lattice, best
// path, person-name roles, part-of-speech tags, the granularity and field
// dictionary passes, and the formatting of the result as text or as records.
// It borrows every shared resource (dictionaries, frequency tables, tag maps)
// and owns only its working objects and buffers, so several instances can
// analyse at once on several threads. One instance serves one call at a time:
// a second call on a busy instance waits until the first has finished.
//
// Results (the text returned by Process, the records of GetResult) live in
// the instance's buffers and stay valid until the next call on the instance.
#ifndef ZIVOR_SYSTEM_MAINSYSTEM_H_
#define ZIVOR_SYSTEM_MAINSYSTEM_H_

#include <pthread.h>
#include <stdio.h>

#include <string>

#include "Utility/Global.h"

class CBigram;
class CCharset;
class CCodeTran;
class CContextStat;
class CFSA;
class CHMMTagger;
class CKeyWordFinder;
class CPDAT;
class CPOS;
class CPOSmap;
class CPreProcess;
class CSegment;
class CTrie;
class CUnigram;

class CMainSystem {
 public:
  // Every pointer is borrowed and must outlive the instance. pUserDict,
  // pFieldDict, pGranDict, pFSA and pCodeTrans may be null; the tag lexicons,
  // maps and statistics may be null when tagging or person recognition is
  // configured off.
  CMainSystem(CCharset* pCharset, CPDAT* pCoreDict, CUnigram* pUnigram,
              CBigram* pBiDict, CTrie* pUserDict, CPDAT* pFieldDict,
              CPDAT* pGranDict, CPOS* pCorePOS, CPOS* pFieldPOS,
              CPOS* pGranPOS, CPOSmap** ppPOSmap, CContextStat* pPOSContext,
              CPOS* pPersonRole, CContextStat* pPersonContext, CFSA* pFSA,
              CCodeTran* pCodeTrans);
  virtual ~CMainSystem();
  CMainSystem(const CMainSystem&) = delete;
  CMainSystem& operator=(const CMainSystem&) = delete;

  // Analyses a text and returns the result text (owned by the instance).
  const char* Process(const char* sLineOrig, int bPOStagged, bool bUserDict);
  // Analyses a text into records and returns their number; GetResult gives
  // them. sLineTrans receives the GBK form of the text.
  int ProcessA(const char* sLineOrig, std::string& sLineTrans, bool bPOStagged,
               bool bUserDict, bool bKeyWordExtract);
  // Analyses a GBK text, line by line when it is longer than 100 bytes.
  // Returns the record count of the last line run.
  int ProcessAtomEx(const char* sLine, bool bPOStagged, bool bUserDict,
                    bool bStrOut);
  // Analyses one GBK line into m_sResult and m_pVecResult.
  int ProcessAtom(const char* sLine, bool bPOStagged, bool bUserDict);
  // The records of the last analysis (the long-text buffer when the text was
  // processed line by line).
  result_t* GetResult(int* p_nCount);
  bool SetFieldPOS(CPOS* pFieldPOS);

  // Appends words 1 .. nWordCount-2 of one sentence segment to the result.
  int Output(const char* pLine, word_t* pWords, int nWordCount, int nStartLen,
             int bPOStagged, bool bUserDict);
  // Appends nWordLen bytes at pLine + nStartLen as one white-space token: to
  // the line result (bOut false) or to the long-text result (bOut true).
  int SetOutput(const char* pLine, int nStartLen, int nWordLen, int handle,
                int nOutputStyle, bool bOut);
  // Tag map level 0 to 3.
  bool SetPOSmap(int nPOSmap);
  int GetPosmap();

  // Merges words that a dictionary word covers exactly into one word.
  int FieldDic(const char* pLine, word_t* pWords, int nWordCount,
               word_t* pWordsDest, int& nWordCountDest, CPDAT* pDict,
               CPOS* pPOS, int nDictType);

  // Analyses a text file line by line into another; returns thousands of
  // bytes per second, 0.0 on failure.
  double FileProcess(const char* sSrcFilename, const char* sDsnFilename,
                     int bPOStagged);
  bool FileProcessEx(const char* sSrcFilename, const char* sDsnFilename);

  bool IsWord(const char* sWord);
  // Smoothed unigram probability (f + 0.05) / (T + 0.05 N).
  double GetUniProb(int nHandle);
  double GetUniProb(const char* sWord);
  bool IsFreqAssociate(const char* sPrevWord, const char* sNextWord);

  CUnigram* m_pUnigram;
  CPDAT* m_pCoreDict;
  CKeyWordFinder* m_pKeyWordFinder = nullptr;
  CPreProcess* m_pPreProcess = nullptr;
  CSegment* m_pSegmenter = nullptr;
  CCharset* m_pCharset;
  CBigram* m_pBiDict;
  CTrie* m_pUserDict;
  CPDAT* m_pFieldDict;
  CPDAT* m_pGranDict;
  CPOS* m_pCorePOS;
  CPOS* m_pFieldPOS;
  CPOS* m_pGranPOS;
  CHMMTagger* m_pTagger = nullptr;
  CPOSmap** m_ppPOSmap;
  CContextStat* m_pPOSContext;
  CPOS* m_pPersonRole;
  CContextStat* m_pPersonContext;
  CHMMTagger* m_pPERTagger = nullptr;
  CFSA* m_pPersonFSA;
  CCodeTran* m_pCodeTranslator;
  bool m_bWordMerged = false;
  int m_nPOSPresent = 0;
  FILE* m_fpLog = nullptr;
  std::string m_sDataPath;
  std::string m_sTagset;
  std::string m_sPOSDelimiter;
  std::string m_sWordBoundary;
  std::string m_sDefaultDir;
  char* m_sResult = nullptr;
  int m_nResultMemSize = 0;
  int m_nResultLen = 0;
  std::string m_sOutput;
  int m_nVecResultLen = 0;
  result_t* m_pVecResult = nullptr;
  int m_nVecResultMemSize = 0;
  int m_nVecOutLen = 0;
  result_t* m_pVecOut = nullptr;
  int m_nVecOutMemSize = 0;
  bool m_bLongText = false;
  int m_nFiledMemSize = 0;
  word_t* m_pVecField = nullptr;
  int m_nPOSmap = 0;
  pthread_mutex_t m_mutex;
  bool m_bProcessing = false;  // read and written only under m_mutex

 private:
  pthread_cond_t m_idle;  // signalled when m_bProcessing is cleared

  void AllocateBuffers();
  void FreeBuffers();
  void BeginProcessing();
  void EndProcessing();
};

#endif  // ZIVOR_SYSTEM_MAINSYSTEM_H_
