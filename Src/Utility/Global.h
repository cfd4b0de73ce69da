// Global.h: the plain records and process-wide identifiers shared by every
// stage of the analysis.
//
// `word_t` is one atom or word of the atom list, the word lattice and the
// chosen path; `POS_info` is one tag of a word with its count; `result_t`, the
// record handed to callers, is one of the public interface's plain types. The
// pseudo-word handles are looked up in the core dictionary once, at
// initialisation, and only read afterwards.
#ifndef ZIVOR_UTILITY_GLOBAL_H_
#define ZIVOR_UTILITY_GLOBAL_H_

#include <cstdint>
#include <string>

#include "zivor/ZIVORTypes.h"

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

// Core-dictionary handles of the pseudo-words and fixed words that atoms and
// path words stand for (-1 while unresolved).
extern int gSent_StartID;      // 始##始, sentence start
extern int gSent_EndID;        // 末##末, sentence end
extern int gUnknown_x_ID;      // 未##串, Latin-letter string
extern int gUnknown_nr_ID;     // 未##人, person name
extern int gUnknown_ns_ID;     // 未##地, place name
extern int gUnknown_nt_ID;     // 未##团, organisation name
extern int gUnknown_t_ID;      // 未##时, time expression
extern int gUnknown_m_ID;      // 未##数, number
extern int gUnknown_nz_ID;     // 未##专, other proper noun
extern int gQuatation_LD_ID;   // “
extern int gQuatation_RD_ID;   // ”
extern int gQuatation_LS_ID;   // ‘
extern int gQuatation_RS_ID;   // ’
extern int gPunctation_WP_ID;  // ———, punctuation run
extern int gOneID;             // 一

// Process-wide settings, given their defaults and then read from the
// configuration by initialisation; analysis only reads them.
extern std::string g_sDefaultDir;     // the data directory, "<dir>/Data"
extern std::string g_sDataPath;       // "Data"
extern std::string g_sTagset;         // file name of tag map 0
extern std::string g_sPOSDelimiter;   // between a word and its tag (first character used)
extern std::string g_sWordBoundary;   // after each word
extern bool g_bWordMerged;            // "Merge": kept, consulted by no stage
extern bool g_bNERPerson;             // person-name recognition on
extern bool g_bPOSTagger;             // part-of-speech tagging on
extern int g_nPOSPresent;             // "POS": kept, consulted by no stage

#endif  // ZIVOR_UTILITY_GLOBAL_H_
