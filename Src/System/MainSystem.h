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

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Utility/CharScan.h"
#include "Utility/Global.h"
#include "Utility/WordStats.h"

class CBigram;
class CCharModel;
class CCharset;
class CCodeTran;
class CContextStat;
class CFSA;
class CHMMTagger;
class CKeyWordFinder;
class CPDAT;
class CPlaceModel;
class CPlaceRecogniser;
class CPOS;
class CPOSmap;
class CPreProcess;
class CRoleGate;
class CSegment;
class CTransliteration;
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
  // With a code translator the text is in the caller's encoding, and so is
  // the result: every word in it is the caller's own bytes.
  const char* Process(const char* sLineOrig, int bPOStagged, bool bUserDict);
  // Analyses a text into records and returns their number; GetResult gives
  // them. sLineTrans receives the GBK form of the text when there is a code
  // translator; the records' offsets then refer to the caller's text, or,
  // with bKeyWordExtract, to sLineTrans.
  int ProcessA(const char* sLineOrig, std::string& sLineTrans, bool bPOStagged,
               bool bUserDict, bool bKeyWordExtract);
  // Analyses a GBK text, line by line when it is longer than 100 bytes.
  // Returns the record count of the last line run; 0 with bStrOut, which
  // asks for the result as text only and makes no records.
  int ProcessAtomEx(const char* sLine, bool bPOStagged, bool bUserDict,
                    bool bStrOut);
  // Analyses one GBK line into m_sResult and m_pVecResult.
  int ProcessAtom(const char* sLine, bool bPOStagged, bool bUserDict);
  // The records of the last analysis (the long-text buffer when the text was
  // processed line by line).
  result_t* GetResult(int* p_nCount);
  bool SetFieldPOS(CPOS* pFieldPOS);
  // The transliteration recogniser (borrowed; null for none), run on the
  // chosen path before person names are recognised.
  void SetTransliteration(const CTransliteration* pTransliteration) {
    m_pTransliteration = pTransliteration;
  }
  // The place-name recogniser's model (borrowed; null for none): places are
  // found on the chosen path and claim their words from the person names
  // recognised there (CPlaceRecogniser).
  void SetPlaceModel(const CPlaceModel* pModel);
  // The character model for words no dictionary holds (borrowed; null for
  // none), run on the chosen path after the name recognisers.
  void SetCharModel(const CCharModel* pCharModel) { m_pCharModel = pCharModel; }
  // The gate that spares the person-role tagging of sentences where no name
  // can be merged (borrowed; null tags every sentence, with the same words
  // as a result). NewPersonGate builds one for the roles and automaton this
  // class is given, once for any number of instances.
  void SetPersonGate(const CRoleGate* pGate) { m_pPersonGate = pGate; }
  static std::unique_ptr<CRoleGate> NewPersonGate(const CPOS& roles, const CFSA& automaton);

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

  // The greatest offset in the nLen bytes of sText (caller's encoding) at
  // which the text can be cut so that analysing the two parts one after the
  // other gives exactly the tokens of the whole; 0 when there is none. Only
  // the first line is searched, and the cut keeps 64 bytes after it
  // (MainSystemCut.cpp says why each condition is needed).
  int GetSafeCut(const char* sText, int nLen);

  // Analyses a text file line by line into another; returns thousands of
  // bytes per second, 0.0 on failure.
  double FileProcess(const char* sSrcFilename, const char* sDsnFilename,
                     int bPOStagged);
  bool FileProcessEx(const char* sSrcFilename, const char* sDsnFilename);

  // Queries of the core dictionary; words are GBK.
  bool IsWord(const char* sWord);
  // Smoothed unigram probability (f + 0.05) / (T + 0.05 N).
  double GetUniProb(int nHandle);
  double GetUniProb(const char* sWord);
  bool IsFreqAssociate(const char* sPrevWord, const char* sNextWord);

  // Points the instance and its preprocessor at another user dictionary
  // (null: none), once any call under way on the instance has finished.
  void SetUserDict(CTrie* pUserDict);

  // Keywords, new words and fingerprints (MainSystemKeyWord.cpp). Each
  // analyses the text with tagging on and the user dictionary off and
  // scans it into a keyword finder. The string results are the ranked words
  // separated by two spaces, with "/tag/weight" when bWeightOut, at most
  // nMaxKeyLimit + 1 of them (-1: all); they live in the instance's result
  // buffer. The file variants read the file line by line and return null
  // when it cannot be opened.
  const char* GetKeyWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut);
  const char* GetFileKeyWords(const char* sFilename, int nMaxKeyLimit, bool bWeightOut);
  const char* GetNewWords(const char* sText, int nMaxKeyLimit, bool bWeightOut);
  const char* GetFileNewWords(const char* sFilename, int nMaxKeyLimit, bool bWeightOut);
  // Hash of the text's top keywords; 0 when none survives the filters.
  unsigned long GetFinger(const char* sLine);

  // A new-word collection over many texts in the instance's own finder:
  // Start clears it, AddMem and AddFile scan texts into it (1 done, 0 bad
  // argument or unreadable file, -1 position cap reached), Complete merges
  // new words and GetResult ranks and formats all of them.
  bool NWI_Start();
  int NWI_AddMem(const char* sText);
  int NWI_AddFile(const char* sFilename);
  bool NWI_Complete();
  const char* NWI_GetResult(bool bWeightOut);
  // The collection's new words, ranked afresh, as user-dictionary lines
  // "WORD TAG".
  std::vector<std::string> NWI_GetResultWords();

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
  const CRoleGate* m_pPersonGate = nullptr;
  const CTransliteration* m_pTransliteration = nullptr;
  std::unique_ptr<CPlaceRecogniser> m_pPlaces;
  const CCharModel* m_pCharModel = nullptr;
  CCodeTran* m_pCodeTranslator;
  CWordStats m_wordStats;  // over the core dictionary and the frequency tables
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
  std::atomic<int> m_nPOSmap{0};  // may be switched while a run is under way
  pthread_mutex_t m_mutex;
  bool m_bProcessing = false;  // read and written only under m_mutex

  // Whether the last call failed (out of memory, a text too long): its
  // results are then not to be used. Read by the caller that holds the
  // instance.
  bool Failed() const { return m_bFailed; }

 private:
  // Holds m_bProcessing for its lifetime: one call at a time on an instance.
  class Busy {
   public:
    explicit Busy(CMainSystem* system);
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

   private:
    CMainSystem* const system_;
  };

  // The default tag (a word or user word without a known tag).
  static constexpr unsigned char kDefaultTag = 21;
  // Word types: a user-dictionary word, a field-dictionary word or person name.
  static constexpr unsigned char kUserWordType = 101;
  static constexpr unsigned char kMergedWordType = 102;

  void AllocateBuffers();
  void FreeBuffers();

  // Keyword helpers, called with the busy flag held: analyse a text (or
  // every line of an open file) and scan the records into the finder. The
  // result is Scan's; a file stops at the position cap (-1) only when asked.
  int ScanText(CKeyWordFinder* pFinder, const char* sText);
  int ScanFile(CKeyWordFinder* pFinder, FILE* fp, bool bStopAtCap);
  // Copies a finished result string into the result buffer and returns it.
  const char* KeepResult(const char* sText);
  // The same for a GBK string of words, converted to the caller's encoding.
  const char* KeepWordList(const char* sGBK);
  // The merged, ranked new words of one text or file, or its keywords.
  enum class Ranking { kKeyWords, kNewWords };
  const char* RankText(const char* sText, Ranking ranking, int nMaxKeyLimit, bool bWeightOut);
  const char* RankFile(const char* sFilename, Ranking ranking, int nMaxKeyLimit,
                       bool bWeightOut);
  const char* Rank(CKeyWordFinder* pFinder, Ranking ranking, int nMaxKeyLimit, bool bWeightOut);

  // Marks the call under way as failed (the first reason goes to the log);
  // its result is then the failure value, never a part of the text.
  void Fail(const std::string& sReason);
  // Gives the names the automaton merged their tag and word type, as the
  // tagger does when it runs.
  static void MarkPersonNames(word_t* pWords, int nCount);

  // Everything between taking the busy flag and releasing it.
  const char* RunProcess(const char* sLine, int bPOStagged, bool bUserDict);
  int RunRecords(const char* sLine, std::string* pGBK, bool bPOStagged, bool bUserDict,
                 bool bKeyWordExtract);
  // Process with a code translator: the result text is rebuilt around the
  // caller's bytes of every word.
  const char* RunTranslatedProcess(const char* sLine, int bPOStagged, bool bUserDict);
  // The text the analysis reads: sText itself without a translator, else its
  // GBK form in *pGBK, with the character offsets in m_vecTransOffsets. An
  // empty text when it cannot be converted.
  const char* ToAnalysisText(const char* sText, std::string* pGBK);
  // The byte layout of the texts and files callers give.
  TextLayout CallerLayout() const;
  int RunText(const char* sLine, bool bPOStagged, bool bUserDict, bool bStrOut);
  int RunLongText(const char* sLine, int nLen, bool bPOStagged, bool bUserDict,
                  bool bStrOut);
  void AppendLineRecords(int nLineOffset);
  // Runs the stages over one sentence segment at nOffset in the line.
  void ProcessSegment(const char* pSegment, int nOffset, bool bPOStagged,
                      bool bUserDict);
  void PrepareLineBuffers(int nLen, bool bTagged);

  // Buffer growth: capacities only grow, never below what is asked for.
  bool ReserveResultText(int64_t nBytes);
  bool ReserveRecords(result_t** ppVec, int* pCapacity, int64_t nRecords);
  result_t* AppendRecord(result_t** ppVec, int* pLen, int* pCapacity);
  // Zeroes a record, no tag and no word id; returns it.
  static result_t* ClearRecord(result_t* pRecord);
  bool AppendResultText(const char* pText, int nLen);
  void AppendWordBoundary();
  void TerminateResult();

  // Output helpers (MainSystemOutput.cpp).
  struct Token;
  // Appends the token that starts at word i; returns the words it consumed.
  int OutputWord(const char* pLine, word_t* pWords, int nWordCount, int i,
                 int nStartLen, bool bTagged, bool bUserDict,
                 const CPOSmap* pMap);
  void MatchUserWord(const char* pLine, word_t* pWords, int nWordCount,
                     int i, bool bTagged, const CPOSmap* pMap, Token* pToken,
                     result_t* pRecord);
  static void MergePatterns(const char* pLine, word_t* pWords, int nWordCount,
                            int i, bool bTagged, Token* pToken);
  void WriteTag(const word_t& word, const Token& token, const CPOSmap* pMap,
                result_t* pRecord);

  // One field pass step: the number of source words the dictionary word at
  // word i covers exactly, or 0.
  static int DictionaryCover(const char* pLine, const word_t* pWords,
                             int nWordCount, int i, CPDAT* pDict, int* pHandle);
  // Reads like fgets (up to nCapacity - 1 bytes, through the first line
  // feed) but returns the number of bytes read, so NUL bytes are seen.
  // A character of the layout is never cut: its last bytes may run up to
  // kMaxCharBytes - 1 past nCapacity - 1, so the buffer holds nCapacity +
  // kMaxCharBytes - 1 bytes.
  static int ReadFilePiece(FILE* fp, char* buffer, int nCapacity, TextLayout layout);
  static constexpr int kMaxCharBytes = 4;
  // Calls visit on each non-empty NUL-terminated part of a piece of nLen
  // bytes until it returns false; false when it did.
  static bool ForEachPart(const char* pPiece, int nLen,
                          const std::function<bool(const char*)>& visit);
  // FileProcess: analyses one piece of a file, returns the clock ticks spent.
  double ProcessPiece(const char* pPiece, int nLen, int bPOStagged,
                      std::string* pResult);

  // Where each word of the result text came from: `length` bytes at
  // `start` in the analysed GBK text, written at `textPos` of the result
  // text. Kept only while a translated Process runs.
  struct TextSpan {
    int start;
    int length;
    int textPos;
  };
  void NoteSpan(int nStart, int nLength, size_t nTextPos) {
    if (m_bTrackSpans) m_vecSpans.push_back({nStart, nLength, static_cast<int>(nTextPos)});
  }
  // Spans noted since `first` were written to the line result; they move to
  // the whole text's result, where the line starts at nLineOffset of the
  // text and its result at nOutputPos; spans past nLineResultLen (the part
  // of the line result that was kept) are dropped.
  void MoveLineSpans(size_t first, int nLineOffset, size_t nOutputPos, size_t nLineResultLen);
  // The GBK result text with every span's word replaced by the caller's
  // bytes and everything else converted to the caller's encoding.
  std::string RestoreText(const char* sResult, const char* sCaller) const;
  // GetSafeCut's helpers: an offset in the analysed text as an offset in the
  // caller's, and whether the caller's text has a UTF-8 byte-order mark at
  // nOffset.
  int CallerOffset(int nAnalysed) const;
  bool StartsWithMark(const char* sText, int nLen, int nOffset) const;
  // Record offsets (and user tags) from the GBK text to the caller's text.
  void MapRecordsToCaller(result_t* pRecords, int nCount) const;
  void TranslateTagName(result_t* pRecord) const;
  // Cuts a user word's tag (GBK, NUL-terminated), between characters, to
  // what the record's tag field holds once converted to the caller's
  // encoding, so that the result text carries the tag the record does.
  void FitUserTag(char* tag) const;

  pthread_cond_t m_idle;  // signalled when m_bProcessing is cleared

  // The GBK form of the caller's text and, for each of its bytes, the offset
  // of its character in the caller's text (code translation only).
  std::string m_sTransText;
  std::vector<int> m_vecTransOffsets;
  std::vector<TextSpan> m_vecSpans;
  bool m_bTrackSpans = false;
  bool m_bFailed = false;
  // Whether the analysis makes records (set by each call: not when the
  // result is wanted as text, which then costs no record and no weight).
  bool m_bKeepLineRecords = true;
};

#endif  // ZIVOR_SYSTEM_MAINSYSTEM_H_
