// MainSystemField.cpp: the granularity and field dictionary passes, which
// merge the words that one dictionary word covers exactly.
#include "System/MainSystem.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"

// Destination slot 0 is never written. A merged slot keeps the handle of the
// first word it covers, while the source word takes the dictionary's handle;
// run in place, the slot is that source word and shows the new handle.
int CMainSystem::FieldDic(const char* pLine, word_t* pWords, int nWordCount,
                          word_t* pWordsDest, int& nWordCountDest, CPDAT* pDict, CPOS* pPOS,
                          int nDictType) {
  nWordCountDest = 1;
  if (pWords == nullptr || pWordsDest == nullptr || nWordCount < 1) return nWordCountDest;
  const int last = nWordCount - 1;
  const unsigned char type = static_cast<unsigned char>(nDictType);
  for (int i = 1; i < last;) {
    word_t& source = pWords[i];
    word_t& dest = pWordsDest[nWordCountDest];
    dest.handle = source.handle;
    dest.type = source.type;
    dest.value = source.value;
    int handle = -1;
    const int cover =
        pDict != nullptr && pLine != nullptr
            ? DictionaryCover(pLine, pWords, nWordCount, i, pDict, &handle)
            : 0;
    if (cover > 0) {
      source.type = type;
      source.handle = handle;
      if (g_bPOSTagger) {
        const unsigned char tag = pPOS != nullptr ? pPOS->GetPOS(handle) : kNoTag;
        source.POS_id = tag == kNoTag ? kDefaultTag : tag;
      }
      dest.type = type;
    }
    const int step = cover > 0 ? cover : 1;
    dest.start = source.start;
    dest.end = pWords[i + step].start;
    if (g_bPOSTagger) dest.POS_id = source.POS_id;
    ++nWordCountDest;
    i += step;
  }
  pWordsDest[nWordCountDest++] = pWords[last];
  return nWordCountDest;
}

// The longest dictionary word at word i's start is accepted when it ends
// exactly at the start of a later word (the sentence end included).
int CMainSystem::DictionaryCover(const char* pLine, const word_t* pWords, int nWordCount,
                                 int i, CPDAT* pDict, int* pHandle) {
  const int start = pWords[i].start;
  const int length = pDict->GetMaxWord(pLine + start, pHandle);
  if (length <= 0) return 0;
  const int end = start + length;
  const int last = nWordCount - 1;
  int j = i + 1;
  while (j < last && pWords[j].start < end) ++j;
  return pWords[j].start == end ? j - i : 0;
}
