/*
 * ZIVORTypes.h: the plain types of the ZIVOR interface, shared by the public
 * header <zivor/ZIVOR.h> and the library's internals.
 *
 * A leaf header: it includes nothing of the library and compiles as C99 and
 * as C++.
 */
#ifndef ZIVOR_ZIVORTYPES_H_
#define ZIVOR_ZIVORTYPES_H_

#include <stddef.h>

/*
 * One word of an analysis result. The layout is part of the binary interface:
 * 68 bytes, packed to 4 so that it is identical on 32-bit and 64-bit x86, with
 * `weight` at byte 60.
 */
#pragma pack(push, 4)
typedef struct result_t {
  int start;        /* byte offset of the word in the caller's text */
  int length;       /* length of the word in bytes */
  char sPOS[40];    /* NUL-filled tag name */
  int iPOS;         /* tag identifier */
  int word_ID;      /* dictionary handle, -1 for pseudo-words, user words, blanks */
  int word_type;    /* 0 ordinary, 1 user-dictionary word, 2 recognised/merged word */
  double weight;    /* -ln of the smoothed unigram probability */
} result_t;
#pragma pack(pop)

#ifdef __cplusplus
static_assert(sizeof(result_t) == 68, "result_t must be 68 bytes");
static_assert(offsetof(result_t, weight) == 60, "result_t::weight must be at byte 60");
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
_Static_assert(sizeof(result_t) == 68, "result_t must be 68 bytes");
_Static_assert(offsetof(result_t, weight) == 60, "result_t::weight must be at byte 60");
#endif

#endif  /* ZIVOR_ZIVORTYPES_H_ */
