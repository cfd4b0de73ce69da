// PlaceRecogniser.h: recognition of place names on the chosen path, from the
// place roles of its words (CPlaceModel says where the roles come from).
//
// Places are found on the segmenter's words, before person names are
// recognised, and put in afterwards: Find merges the places of a copy of the
// words, the person-name pass runs on the words as they are (so it sees
// exactly what it sees without this recogniser), and Claim puts the places
// in, where a person name that overlaps a place gives way to it (刘桥 of 刘桥
// 一矿 is then a place, not a surname and a given name).
//
// A word the role lexicon lacks always gets the role "none": unlike the
// tagger's usual default, it does not switch after punctuation, so the roles
// of a sentence never depend on the sentences analysed before it. The
// tagger's tables and the places found are kept between calls, so each
// analysis instance owns one recogniser; the model it reads is shared.
#ifndef ZIVOR_SYSTEM_PLACERECOGNISER_H_
#define ZIVOR_SYSTEM_PLACERECOGNISER_H_

#include <vector>

#include "Tagger/HMMTagger.h"
#include "Utility/Global.h"

class CPlaceModel;

class CPlaceRecogniser {
 public:
  // `model` is borrowed and must outlive the recogniser; `vocabulary` is the
  // vocabulary size of the role tagger's emission scores.
  CPlaceRecogniser(const CPlaceModel& model, double vocabulary);
  CPlaceRecogniser(const CPlaceRecogniser&) = delete;
  CPlaceRecogniser& operator=(const CPlaceRecogniser&) = delete;

  // Finds the places of words[0 .. count - 1] (a segmented sentence, the
  // first and last word its markers) and keeps the words with each place
  // merged into one: the place-name handle, the tag ns and `mergedType`.
  // The words given are not changed.
  void Find(const word_t* words, int count, unsigned char mergedType);
  // Puts the places found last into words[0 .. *count - 1], the same
  // sentence after other words were merged (person names), and sets *count.
  // A merged word that overlaps a place gives way to it: its words outside
  // the place come back as they were. `words` must have room for the count
  // given to Find.
  void Claim(word_t* words, int* count);

 private:
  // Whether words[0 .. count - 1] can hold a place at all: the tagger gives
  // a word only the roles the lexicon gives it, or "none", and a place is a
  // run of words that can be a first piece, inner pieces and a last piece.
  // Tagging the other sentences is skipped.
  bool MayHoldPlace(const word_t* words, int count) const;
  // Whether found word i is a place.
  bool IsPlace(size_t i) const;
  // The number of found words from i on that `merged` covers exactly, none
  // of them a place; 0 when there is no such run.
  size_t CoveredRun(size_t i, const word_t& merged) const;

  const CPlaceModel& m_model;
  CHMMTagger m_tagger;
  unsigned char m_mergedType = 0;
  std::vector<word_t> m_found;
  bool m_merged = false;  // whether m_found holds a place
  std::vector<word_t> m_claimed;  // Claim's result before it is copied back
};

#endif  // ZIVOR_SYSTEM_PLACERECOGNISER_H_
