// Global.h: the plain records shared by every stage of the analysis.
//
// `word_t` is one atom or word of the atom list, the word lattice and the
// chosen path; `POS_info` is one tag of a word with its count; `result_t`, the
// record handed to callers, is declared with the public interface.
#ifndef ZIVOR_UTILITY_GLOBAL_H_
#define ZIVOR_UTILITY_GLOBAL_H_

#include <cstdint>

#include "API/ZIVOR.h"

// The identifier that means "no tag" or "no type" in the 8-bit fields.
constexpr unsigned char kNoTag = 255;

struct word_t {
  int handle = -1;            // handle in the dictionary that produced the word
  int start = -1;             // byte offset of the first byte in the sentence
  int end = -1;               // byte offset one past the last byte
  double value = 0.0;         // unigram frequency on the chosen path
  unsigned char type = kNoTag;    // character type of an atom, or a word kind
  unsigned char POS_id = kNoTag;  // tag identifier
};

struct POS_info {
  unsigned char POS_id = kNoTag;  // tag identifier
  int freq = 0;                   // how often the word carries the tag
};

#endif  // ZIVOR_UTILITY_GLOBAL_H_
