// TagRefiner.cpp: the closed word lists that refine the corpus's coarse tags.
//
// The corpus tags punctuation `w`, auxiliaries `u`, pronouns `r`, and 是, 有,
// 把 and 被 with their coarse class only; the analyser's tag set splits these
// classes by the word itself. A word keeps its coarse tag unless it carries
// that class in the corpus and stands in the class's list below, so that the
// refinement never changes the coarse class of a token. Pronouns get the
// temporal, locative and predicative subclasses only where the word is
// unambiguous (这里 is always a place, 这样 is not always a predicate).
// Morpheme tags are written in capitals by the corpus (Ng, Vg ...) and in
// lower case by the map; the map's lookup ignores case. A tag the map does
// not know (a slip such as `vvn` or `na`) is read by its first letter, and a
// first letter the map does not know either gives the default tag `n`.
#include "TagRefiner.h"

#include <sstream>

#include "Utility/Global.h"
#include "Utility/POSmap.h"

namespace {

struct TagList {
  const char* tag;    // refined tag name
  const char* words;  // GBK words separated by blanks
};

// Each list's coarse class is the first letter of its tag.
const TagList kTagLists[] = {
    // （ 〔 ［ ｛ 《 【 〖 〈 ( [ { <
    {"wkz", "\xa3\xa8 \xa1\xb2 \xa3\xdb \xa3\xfb \xa1\xb6 \xa1\xbe \xa1\xbc \xa1\xb4 ( [ { <"},
    // ） 〕 ］ ｝ 》 】 〗 〉 ) ] } >
    {"wky", "\xa3\xa9 \xa1\xb3 \xa3\xdd \xa3\xfd \xa1\xb7 \xa1\xbf \xa1\xbd \xa1\xb5 ) ] } >"},
    // “ ‘ 『 「
    {"wyz", "\xa1\xb0 \xa1\xae \xa1\xba \xa1\xb8"},
    // ” ’ 』 」
    {"wyy", "\xa1\xb1 \xa1\xaf \xa1\xbb \xa1\xb9"},
    // 。 ． .
    {"wj", "\xa1\xa3 \xa3\xae ."},
    // ？ ?
    {"ww", "\xa3\xbf ?"},
    // ！ !
    {"wt", "\xa3\xa1 !"},
    // ， ,
    {"wd", "\xa3\xac ,"},
    // ； ;
    {"wf", "\xa3\xbb ;"},
    // 、
    {"wn", "\xa1\xa2"},
    // ： :
    {"wm", "\xa3\xba :"},
    // …… …
    {"ws", "\xa1\xad\xa1\xad \xa1\xad"},
    // —— － - ———
    {"wp", "\xa1\xaa\xa1\xaa \xa3\xad - \xa1\xaa\xa1\xaa\xa1\xaa"},
    // ％ ‰ %
    {"wb", "\xa3\xa5 \xa1\xeb %"},
    // ￥ ＄ ￡ ° ℃ $
    {"wh", "\xa3\xa4 \xa1\xe7 \xa1\xea \xa1\xe3 \xa1\xe6 $"},
    // 的 底
    {"ude1", "\xb5\xc4 \xb5\xd7"},
    // 地
    {"ude2", "\xb5\xd8"},
    // 得
    {"ude3", "\xb5\xc3"},
    // 了 喽
    {"ule", "\xc1\xcb \xe0\xb6"},
    // 着
    {"uzhe", "\xd7\xc5"},
    // 过
    {"uguo", "\xb9\xfd"},
    // 所
    {"usuo", "\xcb\xf9"},
    // 等 等等 云云
    {"udeng", "\xb5\xc8 \xb5\xc8\xb5\xc8 \xd4\xc6\xd4\xc6"},
    // 一样 一般 似的 般
    {"uyy", "\xd2\xbb\xd1\xf9 \xd2\xbb\xb0\xe3 \xcb\xc6\xb5\xc4 \xb0\xe3"},
    // 的话
    {"udh", "\xb5\xc4\xbb\xb0"},
    // 来讲 来说 而言 说来
    {"uls", "\xc0\xb4\xbd\xb2 \xc0\xb4\xcb\xb5 \xb6\xf8\xd1\xd4 \xcb\xb5\xc0\xb4"},
    // 之
    {"uzhi", "\xd6\xae"},
    // 我 你 您 他 她 它 我们 你们 他们 她们 它们 咱 咱们 自己 人家 大家 彼此 本人 自家 俺 俺们 自个儿
    {"rr", "\xce\xd2 \xc4\xe3 \xc4\xfa \xcb\xfb \xcb\xfd \xcb\xfc \xce\xd2\xc3\xc7 "
           "\xc4\xe3\xc3\xc7 \xcb\xfb\xc3\xc7 \xcb\xfd\xc3\xc7 \xcb\xfc\xc3\xc7 \xd4\xdb "
           "\xd4\xdb\xc3\xc7 \xd7\xd4\xbc\xba \xc8\xcb\xbc\xd2 \xb4\xf3\xbc\xd2 "
           "\xb1\xcb\xb4\xcb \xb1\xbe\xc8\xcb \xd7\xd4\xbc\xd2 \xb0\xb3 \xb0\xb3\xc3\xc7 "
           "\xd7\xd4\xb8\xf6\xb6\xf9"},
    // 这 那 这些 那些 这样 那样 此 该 本 这个 那个 这么 那么 这种 那种 每 各 某 某些 其他 其它 其余 任何 一切 所有 彼 诸
    {"rz", "\xd5\xe2 \xc4\xc7 \xd5\xe2\xd0\xa9 \xc4\xc7\xd0\xa9 \xd5\xe2\xd1\xf9 "
           "\xc4\xc7\xd1\xf9 \xb4\xcb \xb8\xc3 \xb1\xbe \xd5\xe2\xb8\xf6 \xc4\xc7\xb8\xf6 "
           "\xd5\xe2\xc3\xb4 \xc4\xc7\xc3\xb4 \xd5\xe2\xd6\xd6 \xc4\xc7\xd6\xd6 \xc3\xbf "
           "\xb8\xf7 \xc4\xb3 \xc4\xb3\xd0\xa9 \xc6\xe4\xcb\xfb \xc6\xe4\xcb\xfc "
           "\xc6\xe4\xd3\xe0 \xc8\xce\xba\xce \xd2\xbb\xc7\xd0 \xcb\xf9\xd3\xd0 \xb1\xcb "
           "\xd6\xee"},
    // 谁 什么 哪 怎么 怎样 为什么 多少 几 哪些 哪个 何 啥 怎
    {"ry", "\xcb\xad \xca\xb2\xc3\xb4 \xc4\xc4 \xd4\xf5\xc3\xb4 \xd4\xf5\xd1\xf9 "
           "\xce\xaa\xca\xb2\xc3\xb4 \xb6\xe0\xc9\xd9 \xbc\xb8 \xc4\xc4\xd0\xa9 "
           "\xc4\xc4\xb8\xf6 \xba\xce \xc9\xb6 \xd4\xf5"},
    // 这时 那时 此时 此刻 这会儿 那会儿
    {"rzt", "\xd5\xe2\xca\xb1 \xc4\xc7\xca\xb1 \xb4\xcb\xca\xb1 \xb4\xcb\xbf\xcc "
            "\xd5\xe2\xbb\xe1\xb6\xf9 \xc4\xc7\xbb\xe1\xb6\xf9"},
    // 这里 那里 这儿 那儿 此地 此处 这边 那边
    {"rzs", "\xd5\xe2\xc0\xef \xc4\xc7\xc0\xef \xd5\xe2\xb6\xf9 \xc4\xc7\xb6\xf9 "
            "\xb4\xcb\xb5\xd8 \xb4\xcb\xb4\xa6 \xd5\xe2\xb1\xdf \xc4\xc7\xb1\xdf"},
    // 如此 这般
    {"rzv", "\xc8\xe7\xb4\xcb \xd5\xe2\xb0\xe3"},
    // 何时 几时
    {"ryt", "\xba\xce\xca\xb1 \xbc\xb8\xca\xb1"},
    // 哪里 哪儿 何处 何地
    {"rys", "\xc4\xc4\xc0\xef \xc4\xc4\xb6\xf9 \xba\xce\xb4\xa6 \xba\xce\xb5\xd8"},
    // 怎么样 如何 为何
    {"ryv", "\xd4\xf5\xc3\xb4\xd1\xf9 \xc8\xe7\xba\xce \xce\xaa\xba\xce"},
    // 是
    {"vshi", "\xca\xc7"},
    // 有
    {"vyou", "\xd3\xd0"},
    // 把
    {"pba", "\xb0\xd1"},
    // 被
    {"pbei", "\xb1\xbb"},
};

}  // namespace

TagRefiner::TagRefiner(const CPOSmap& map) : map_(map) {
  for (const TagList& list : kTagLists) {
    const std::string coarse(1, list.tag[0]);
    std::istringstream words(list.words);
    std::string word;
    while (words >> word) refined_[{coarse, word}] = Id(list.tag);
  }
}

unsigned char TagRefiner::Id(const char* name) const { return map_.GetID(name); }

unsigned char TagRefiner::Refine(const std::string& word, const std::string& corpus_tag) const {
  const auto found = refined_.find({corpus_tag, word});
  if (found != refined_.end()) return found->second;
  unsigned char id = Id(corpus_tag.c_str());
  if (id == kNoTag && !corpus_tag.empty()) id = Id(corpus_tag.substr(0, 1).c_str());
  return id != kNoTag ? id : Id("n");
}
