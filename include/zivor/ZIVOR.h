/*
 * ZIVOR.h: the public interface of the ZIVOR Chinese lexical analysis library.
 *
 * Everything here has C linkage and C-compatible types so that C, C++, Java
 * (through the JNI bindings) and any foreign-function interface can call it.
 * The header compiles as C99 and as C++; it needs only <zivor/ZIVORTypes.h>,
 * installed beside it.
 *
 * What holds for every call:
 *   Encoding  every text passed and returned is in the encoding chosen by
 *             ZIVOR_Init (GBK, UTF-8, BIG5 or GBK with traditional
 *             characters), NUL-terminated; file names are passed to the
 *             operating system as they are. The one exception is the file of
 *             ZIVOR_ImportUserDict, which is always GBK.
 *   Results   returned pointers belong to the library: never free them. A
 *             text or record array stays valid until the same thread makes
 *             its next call of the same kind (each call says which), and
 *             never beyond ZIVOR_Exit. Copy what must live longer.
 *   Failure   a call that cannot give its whole result returns its failure
 *             value (null, 0, 0.0, false or -1, as each says) and writes the
 *             reason as a line of the day's log, YYYYmmdd.log in the current
 *             working directory. No C++ exception leaves the library, and
 *             every call before ZIVOR_Init or after ZIVOR_Exit returns its
 *             failure value.
 *   Files     the library reads the data directory given to ZIVOR_Init and
 *             writes into it only the new-word log NewWord.lst (opened by
 *             ZIVOR_Init, appended by ZIVOR_GetNewWords) and UserDict.pdat
 *             (written by the calls that import or save the user
 *             dictionary). A read-only data directory works: those writes
 *             then fail, are logged, and the calls say so by their values.
 *   Threads   ZIVOR_Init and ZIVOR_Exit run alone. The analysis, keyword and
 *             new-word calls may run on any number of threads at once; the
 *             calls marked "one thread at a time" share the main instance
 *             and must not overlap each other.
 */
#ifndef ZIVOR_ZIVOR_H_
#define ZIVOR_ZIVOR_H_

#include <stddef.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "ZIVORTypes.h"

/* Marks the functions the shared library exports; it exports nothing else. */
#if defined(__GNUC__)
#define ZIVOR_API __attribute__((visibility("default")))
#else
#define ZIVOR_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Initialisation and exit.
 *
 * ZIVOR_Init loads the data directory `sInitDirPath`/Data (null or empty: the
 * current working directory) as "Data/Configure.xml" describes it; an
 * installed library's data lies in PREFIX/share/zivor (pkg-config's
 * "datadir" variable, CMake's ZIVOR_DATA_DIR). `encode`
 * is the caller's encoding, that of every text passed to and returned by the
 * calls below:
 *   0  GBK (the analysis's own encoding: nothing is converted);
 *   1  UTF-8 (a byte-order mark at the start of a text is skipped);
 *   2  BIG5 (traditional characters, analysed as their simplified forms);
 *   3  GBK bytes written with traditional characters, likewise;
 *   4  GBK through the converter (like 0, but malformed bytes are one
 *      unknown character each);
 * any other value is GBK. With codes 1 to 4 the words of a result are the
 * caller's own bytes, exactly as they stand in the text passed; a character
 * the analysis does not know (emoji, Hangul, rare Chinese characters,
 * malformed bytes) is one unknown character and never disturbs the text
 * around it. The translation tables (Data/UTF8.pdat and its siblings) are
 * loaded for codes 1 to 3; a missing table is logged and its text then
 * passes through as unknown characters. Returns
 * true when the library is ready, also when it already was (a second call
 * changes nothing, not even the encoding); false on failure, with the reason
 * in the day's log file (YYYYmmdd.log in the current directory).
 * It must not run concurrently with any other call.
 *
 * ZIVOR_Exit releases everything ZIVOR_Init built; false when the library was
 * not initialised. No other call may be under way. ZIVOR_Init may be called
 * again afterwards.
 */
ZIVOR_API bool ZIVOR_Init(const char* sInitDirPath, int encode);
ZIVOR_API bool ZIVOR_Exit(void);

/*
 * Analysis. Every call below may run on any number of threads at once; each
 * borrows an analysis instance for its duration. Returned pointers belong to
 * the library: the text of ZIVOR_ParagraphProcess stays valid until the same
 * thread calls ZIVOR_ParagraphProcess again, the records of
 * ZIVOR_ParagraphProcessA until the same thread calls ZIVOR_ParagraphProcessA
 * again. Before ZIVOR_Init and after ZIVOR_Exit each
 * returns its failure value (null, 0, 0.0 or false).
 *
 * A call either gives the result of its whole text or its failure value:
 * when memory runs out, the text is longer than 357,912,917 bytes (the most
 * one call takes), or anything else stops it part-way, it returns null (0
 * records, 0.0) and writes the reason to the day's log. No C++ exception
 * leaves the library.
 *
 * Memory: besides the data loaded once, a call holds its result (as text
 * about two to three times the text's bytes with tags; as records 68 bytes
 * a word, a word being some 2 to 4 bytes of Chinese text), a copy of the
 * text (in encodings 1 to 4 its GBK form and 4 bytes a byte of offsets), and
 * working memory for one sentence at a time. A sentence ends at white space
 * or a full stop, and at the latest after 64 KB, so the working memory stays
 * under some 20 MB whatever the text. The buffers stay with the instance for
 * its next call. ZIVOR_GetSafeCut below lets a caller analyse a text of any
 * length in pieces of bounded size with the result of the whole.
 */

/* The analysed text: each word followed by the tag delimiter and its tag
 * (when bPOStagged is non-zero and tagging is configured on) and the word
 * boundary. */
ZIVOR_API const char* ZIVOR_ParagraphProcess(const char* sParagraph, int bPOStagged);

/* The analysis as records; *pResultCount receives their number (0 on
 * failure). bUserDict lets user-dictionary words override the segmentation.
 * Each record's start and length are byte offsets in sParagraph as passed
 * (with codes 1 to 4 too); the records of a text without line breaks cover
 * it from its first byte to its last without gap or overlap. */
ZIVOR_API const result_t* ZIVOR_ParagraphProcessA(const char* sParagraph, int* pResultCount,
                                                  bool bUserDict);

/* The record count of sParagraph, analysed on the main instance, and a copy
 * of those records into the caller's array of nCount records. The copy is
 * made only when nCount equals the count of the main instance's last
 * analysis; otherwise `result` is left untouched. The pair is for one thread
 * at a time. */
ZIVOR_API int ZIVOR_GetParagraphProcessAWordCount(const char* sParagraph);
ZIVOR_API void ZIVOR_ParagraphProcessAW(int nCount, result_t* result);

/* Analyses a text file line by line into sResultFilename, both in the
 * caller's encoding; a line longer than 10,239 bytes is analysed in pieces
 * that never cut a character. Returns the speed in thousands of bytes per
 * second, 0.0 on failure. */
ZIVOR_API double ZIVOR_FileProcess(const char* sSourceFilename, const char* sResultFilename,
                                   int bPOStagged);

/* Where a long text can be cut in two so that analysing the parts one after
 * the other gives exactly the analysis of the whole: the greatest such
 * offset in the first nLength bytes of sText (which need not end there; a
 * NUL before them ends the text), or 0 when there is none. The cut lies at
 * the start of a sentence, more than 100 bytes into the text and at least
 * 64 bytes before nLength, and within the text's first line. A caller with
 * a line of any length reads, say, a megabyte of it, analyses it up to the
 * cut, and goes on from the cut with the next megabyte: results identical
 * to one call, in memory bounded by the piece (sentences are at most about
 * a megabyte long). The records of the second part count from the cut.
 * Thread-safe, like the analysis calls; 0 before ZIVOR_Init. */
ZIVOR_API int ZIVOR_GetSafeCut(const char* sText, int nLength);

/* Chooses the tag names of later results: 0 the configured tag set, 1 its
 * first level, 2 the PKU tag set, 3 the PKU first level. Always returns 0;
 * values outside 0..3 change nothing. Not to be called during analyses. */
ZIVOR_API int ZIVOR_SetPOSmap(int nPOSmap);

/* Word queries on the core dictionary (main instance; one thread at a time
 * together with the count/copy pair above). */
ZIVOR_API bool ZIVOR_IsWord(const char* sWord);
ZIVOR_API double ZIVOR_GetUniProb(const char* sWord);

/*
 * Keywords, new words and fingerprints.
 *
 * Keyword and new-word lists are text: the words in ranking order, each
 * followed by two spaces; with bWeightOut each word is followed by
 * "/tag/weight" (weight with two decimals) before the spaces. nMaxKeyLimit
 * is one less than the number of words wanted (0 gives one word, 10 gives
 * eleven); -1 gives them all. The strings are valid until the same thread's
 * next call of the same kind; the file variants return null when the file
 * cannot be opened. Each call may run on any number of threads at once.
 * ZIVOR_GetNewWords also appends its result and a line feed to the data
 * directory's "NewWord.lst".
 */
ZIVOR_API const char* ZIVOR_GetKeyWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut);
ZIVOR_API const char* ZIVOR_GetFileKeyWords(const char* sFilename, int nMaxKeyLimit,
                                           bool bWeightOut);
ZIVOR_API const char* ZIVOR_GetNewWords(const char* sLine, int nMaxKeyLimit, bool bWeightOut);
ZIVOR_API const char* ZIVOR_GetFileNewWords(const char* sFilename, int nMaxKeyLimit,
                                           bool bWeightOut);

/* A 32-bit number identifying the text by its top six keywords; 0 when the
 * text has none (and before ZIVOR_Init). */
ZIVOR_API unsigned long ZIVOR_FingerPrint(const char* sLine);

/*
 * New words of a collection of texts, on the main instance: Start clears the
 * collection, AddMem and AddFile add texts (AddFile: 0 when the file cannot
 * be opened, -1 when the collection is full), Complete finds the new words
 * and GetResult lists all of them as above. One thread at a time; every call
 * returns 0 (GetResult null) before ZIVOR_Init.
 */
ZIVOR_API int ZIVOR_NWI_Start(void);
ZIVOR_API int ZIVOR_NWI_AddFile(const char* sFilename);
ZIVOR_API int ZIVOR_NWI_AddMem(const char* sText);
ZIVOR_API int ZIVOR_NWI_Complete(void);
ZIVOR_API const char* ZIVOR_NWI_GetResult(bool bWeightOut);

/*
 * The user dictionary, shared by every analysis. These calls wait for the
 * analyses under way to finish and hold new ones back while they change it.
 *
 * ZIVOR_AddUserWord adds "WORD [TAG]" (tag "n" when none); 1 when the word
 * is new, 0 when it was present (its tag is replaced) or the tag is longer
 * than 39 bytes. ZIVOR_DelUsrWord deletes a word and returns its handle, -1
 * when absent. Neither saves.
 * ZIVOR_ImportUserDict replaces the dictionary by a text file of such lines
 * (always GBK, whatever the encoding of the calls) and saves it as "UserDict.pdat" in the data directory; returns the
 * number of words, 0 on failure, in which case no user dictionary remains.
 * ZIVOR_SaveTheUsrDic saves the dictionary: 1 on success; on failure 0 and
 * the dictionary is dropped (ZIVOR_ImportUserDict or a new ZIVOR_Init must
 * come before the next analysis).
 * ZIVOR_NWI_Result2UserDict adds the collection's new words (tag "n_new")
 * and saves; returns the number of new words offered.
 */
ZIVOR_API int ZIVOR_AddUserWord(const char* sWord);
ZIVOR_API int ZIVOR_DelUsrWord(const char* sWord);
ZIVOR_API unsigned int ZIVOR_ImportUserDict(const char* sFilename);
ZIVOR_API int ZIVOR_SaveTheUsrDic(void);
ZIVOR_API unsigned int ZIVOR_NWI_Result2UserDict(void);

#ifdef __cplusplus
}  /* extern "C" */
#endif

#endif  /* ZIVOR_ZIVOR_H_ */
