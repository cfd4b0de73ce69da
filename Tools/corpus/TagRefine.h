// TagRefine.h: the corpus's coarse PKU tags refined to the analyser's level-0
// tag set (Data/ZIVOR.map), so that counts and evaluations speak the tags the
// tagger emits.
//
// The refinement is by the token alone and deterministic:
// - w: by the punctuation (wkz wky wyz wyy wj ww wt wd wf wn wm ws wp wb wh);
//   other punctuation stays w.
// - u: 的 底 ude1, 地 ude2, 得 ude3, 了 喽 ule, 着 uzhe, 过 uguo, 所 usuo,
//   等 等等 云云 udeng, 一样 一般 似的 般 uyy, 的话 udh, 来讲 来说 而言 说来 uls,
//   之 uzhi; other words stay u.
// - v: 是 vshi, 有 vyou. p: 把 pba, 被 pbei.
// - r: closed lists (TagRefine.cpp has them all): personal rr, demonstrative
//   rz, interrogative ry, and the temporal, locative and predicative
//   subclasses rzt rzs rzv ryt rys ryv for words that are unambiguously so;
//   other pronouns stay r.
// - The morpheme tags go to lower case: Ng ng, Vg vg, Ag ag, Dg dg, Tg tg,
//   Mg mg, Rg rg, Bg bg, Yg yg.
// Every other tag (n, nr, ns, vn, l, nx, and the corpus's one-off slips) is
// returned as written.
#ifndef ZIVOR_TOOLS_TAGREFINE_H_
#define ZIVOR_TOOLS_TAGREFINE_H_

#include <string>

// The level-0 tag of the corpus token `word` (GBK) tagged `tag`.
std::string RefineCorpusTag(const std::string& word, const std::string& tag);

#endif  // ZIVOR_TOOLS_TAGREFINE_H_
