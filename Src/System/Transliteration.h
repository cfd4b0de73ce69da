// Transliteration.h: recognition of transliterated names and places.
//
// A transliterated name or place (克林顿, 内塔尼亚胡, 埃塞俄比亚) that the
// dictionary lacks comes out of segmentation as a run of short words made
// of the few hundred characters transliteration uses. CTransliteration
// merges such runs: two or more consecutive words, three or more characters
// together, every character far more frequent in transliterations than in
// text at large (a middle dot may join the words, 安德鲁·托马斯). The run
// becomes one word with the person-name handle and tag nrf, or the
// place-name handle (tag ns), whichever kind of transliteration its
// characters fit better (all of them, and the last once more for its place
// at the end). It runs on the chosen path after the person-name recogniser:
// a transliterated name that recogniser merged is a piece of a run like any
// other (安德鲁 + ·托马斯) and is judged the same way, so it may become a
// place (博茨瓦纳); a Chinese name it merged is never a piece.
//
// The character counts come from tr.char, a tag lexicon over the core
// dictionary's handles whose tags are kNameCount, kPlaceCount and kAllCount
// (written by `zivor-data model`). The object is built once and afterwards
// only read, so any number of threads may use it.
#ifndef ZIVOR_SYSTEM_TRANSLITERATION_H_
#define ZIVOR_SYSTEM_TRANSLITERATION_H_

#include <bitset>
#include <vector>

#include "Utility/Global.h"

class CPDAT;

class CTransliteration {
 public:
  // Tags of tr.char: occurrences in transliterated names, in transliterated
  // places and in the whole training text.
  static constexpr unsigned char kNameCount = 0;
  static constexpr unsigned char kPlaceCount = 1;
  static constexpr unsigned char kAllCount = 2;
  // Occurrences as the last character of a transliterated name or place.
  static constexpr unsigned char kNameLastCount = 3;
  static constexpr unsigned char kPlaceLastCount = 4;
  // A character belongs to transliterations when it is at least this many
  // times more frequent in them than in all text, and seen in them at least
  // kMinSeen times.
  static constexpr double kMinRatio = 4.0;
  static constexpr int kMinSeen = 3;
  // Shortest run merged, in characters.
  static constexpr int kMinChars = 3;
  // The tag a merged name gets.
  static constexpr unsigned char kNameTag = 28;  // nrf

  // `dict` is the core dictionary the table's handles belong to; it is read
  // only while loading.
  explicit CTransliteration(const CPDAT* dict);
  CTransliteration(const CTransliteration&) = delete;
  CTransliteration& operator=(const CTransliteration&) = delete;

  // Reads tr.char. False, keeping what was loaded, when the lexicon does not
  // load, or a record has a tag other than the three, or a count below 0,
  // or it holds no character of transliterations.
  bool Load(const char* path);

  // Merges the runs of words[0 .. *count - 1] (words of the GBK `sentence`,
  // the first and last the sentence markers), lowering *count.
  void Merge(const char* sentence, word_t* words, int* count) const;

  // Whether the character with this GBK code belongs to transliterations.
  bool IsTransliterationChar(int code) const;

 private:
  struct CharScore {
    float name = 0.0f;        // ln P(c | transliterated names)
    float place = 0.0f;       // ln P(c | transliterated places)
    float name_last = 0.0f;   // ln P(c | last character of a name)
    float place_last = 0.0f;  // ln P(c | last character of a place)
  };
  // The two-byte codes scored: every GBK character.
  static constexpr int kFirstCode = 0x8140;
  static constexpr int kLastCode = 0xFEFE;
  static constexpr int kCodes = kLastCode - kFirstCode + 1;

  // The score of the character with this GBK code (a default one for a
  // code outside GBK's two-byte range).
  const CharScore& ScoreOf(int code) const;
  // How many characters the word has when it is a piece of a run (every
  // character a member), else 0.
  int PieceChars(const char* sentence, const word_t& word) const;
  // Adds the scores of a piece's characters.
  void AddScores(const char* sentence, const word_t& word, double* name, double* place) const;
  static bool IsMiddleDot(const char* sentence, const word_t& word);
  // Whether a run whose characters scored `name` and `place` and that ends
  // with `last` is rather a place than a name.
  bool IsPlace(const char* sentence, const word_t& last, double name, double place) const;

  const CPDAT* m_pDict;
  std::bitset<kCodes> m_members;    // by code - kFirstCode
  std::vector<CharScore> m_scores;  // by code - kFirstCode
  // ln of the shares of names and places among transliterated characters.
  double m_namePrior = 0.0;
  double m_placePrior = 0.0;
  CharScore m_none;
};

#endif  // ZIVOR_SYSTEM_TRANSLITERATION_H_
