// TagRefine.cpp: the word lists of the tag refinement (TagRefine.h).
#include "TagRefine.h"

#include <cctype>

namespace {

struct Refinement {
  const char* coarse;  // the corpus tag the entry applies to
  const char* word;    // GBK
  const char* refined;
};

// clang-format off
const Refinement kRefinements[] = {
    {"w", "\xa3\xa8", "wkz"},             // （
    {"w", "\xa1\xb2", "wkz"},             // 〔
    {"w", "\xa3\xdb", "wkz"},             // ［
    {"w", "\xa3\xfb", "wkz"},             // ｛
    {"w", "\xa1\xb6", "wkz"},             // 《
    {"w", "\xa1\xbe", "wkz"},             // 【
    {"w", "\xa1\xbc", "wkz"},             // 〖
    {"w", "\xa1\xb4", "wkz"},             // 〈
    {"w", "(", "wkz"},                    // (
    {"w", "[", "wkz"},                    // [
    {"w", "{", "wkz"},                    // {
    {"w", "<", "wkz"},                    // <
    {"w", "\xa3\xa9", "wky"},             // ）
    {"w", "\xa1\xb3", "wky"},             // 〕
    {"w", "\xa3\xdd", "wky"},             // ］
    {"w", "\xa3\xfd", "wky"},             // ｝
    {"w", "\xa1\xb7", "wky"},             // 》
    {"w", "\xa1\xbf", "wky"},             // 】
    {"w", "\xa1\xbd", "wky"},             // 〗
    {"w", "\xa1\xb5", "wky"},             // 〉
    {"w", ")", "wky"},                    // )
    {"w", "]", "wky"},                    // ]
    {"w", "}", "wky"},                    // }
    {"w", ">", "wky"},                    // >
    {"w", "\xa1\xb0", "wyz"},             // “
    {"w", "\xa1\xae", "wyz"},             // ‘
    {"w", "\xa1\xba", "wyz"},             // 『
    {"w", "\xa1\xb8", "wyz"},             // 「
    {"w", "\xa1\xb1", "wyy"},             // ”
    {"w", "\xa1\xaf", "wyy"},             // ’
    {"w", "\xa1\xbb", "wyy"},             // 』
    {"w", "\xa1\xb9", "wyy"},             // 」
    {"w", "\xa1\xa3", "wj"},              // 。
    {"w", "\xa3\xae", "wj"},              // ．
    {"w", ".", "wj"},                     // .
    {"w", "\xa3\xbf", "ww"},              // ？
    {"w", "?", "ww"},                     // ?
    {"w", "\xa3\xa1", "wt"},              // ！
    {"w", "!", "wt"},                     // !
    {"w", "\xa3\xac", "wd"},              // ，
    {"w", ",", "wd"},                     // ,
    {"w", "\xa3\xbb", "wf"},              // ；
    {"w", ";", "wf"},                     // ;
    {"w", "\xa1\xa2", "wn"},              // 、
    {"w", "\xa3\xba", "wm"},              // ：
    {"w", ":", "wm"},                     // :
    {"w", "\xa1\xad\xa1\xad", "ws"},      // ……
    {"w", "\xa1\xad", "ws"},              // …
    {"w", "\xa1\xaa\xa1\xaa", "wp"},      // ——
    {"w", "\xa3\xad", "wp"},              // －
    {"w", "-", "wp"},                     // -
    {"w", "\xa1\xaa\xa1\xaa\xa1\xaa", "wp"}, // ———
    {"w", "\xa3\xa5", "wb"},              // ％
    {"w", "\xa1\xeb", "wb"},              // ‰
    {"w", "%", "wb"},                     // %
    {"w", "\xa3\xa4", "wh"},              // ￥
    {"w", "\xa1\xe7", "wh"},              // ＄
    {"w", "\xa1\xea", "wh"},              // ￡
    {"w", "\xa1\xe3", "wh"},              // °
    {"w", "\xa1\xe6", "wh"},              // ℃
    {"w", "$", "wh"},                     // $
    {"u", "\xb5\xc4", "ude1"},            // 的
    {"u", "\xb5\xd7", "ude1"},            // 底
    {"u", "\xb5\xd8", "ude2"},            // 地
    {"u", "\xb5\xc3", "ude3"},            // 得
    {"u", "\xc1\xcb", "ule"},             // 了
    {"u", "\xe0\xb6", "ule"},             // 喽
    {"u", "\xd7\xc5", "uzhe"},            // 着
    {"u", "\xb9\xfd", "uguo"},            // 过
    {"u", "\xcb\xf9", "usuo"},            // 所
    {"u", "\xb5\xc8", "udeng"},           // 等
    {"u", "\xb5\xc8\xb5\xc8", "udeng"},   // 等等
    {"u", "\xd4\xc6\xd4\xc6", "udeng"},   // 云云
    {"u", "\xd2\xbb\xd1\xf9", "uyy"},     // 一样
    {"u", "\xd2\xbb\xb0\xe3", "uyy"},     // 一般
    {"u", "\xcb\xc6\xb5\xc4", "uyy"},     // 似的
    {"u", "\xb0\xe3", "uyy"},             // 般
    {"u", "\xb5\xc4\xbb\xb0", "udh"},     // 的话
    {"u", "\xc0\xb4\xbd\xb2", "uls"},     // 来讲
    {"u", "\xc0\xb4\xcb\xb5", "uls"},     // 来说
    {"u", "\xb6\xf8\xd1\xd4", "uls"},     // 而言
    {"u", "\xcb\xb5\xc0\xb4", "uls"},     // 说来
    {"u", "\xd6\xae", "uzhi"},            // 之
    {"v", "\xca\xc7", "vshi"},            // 是
    {"v", "\xd3\xd0", "vyou"},            // 有
    {"p", "\xb0\xd1", "pba"},             // 把
    {"p", "\xb1\xbb", "pbei"},            // 被
    {"r", "\xce\xd2", "rr"},              // 我
    {"r", "\xc4\xe3", "rr"},              // 你
    {"r", "\xc4\xfa", "rr"},              // 您
    {"r", "\xcb\xfb", "rr"},              // 他
    {"r", "\xcb\xfd", "rr"},              // 她
    {"r", "\xcb\xfc", "rr"},              // 它
    {"r", "\xce\xd2\xc3\xc7", "rr"},      // 我们
    {"r", "\xc4\xe3\xc3\xc7", "rr"},      // 你们
    {"r", "\xcb\xfb\xc3\xc7", "rr"},      // 他们
    {"r", "\xcb\xfd\xc3\xc7", "rr"},      // 她们
    {"r", "\xcb\xfc\xc3\xc7", "rr"},      // 它们
    {"r", "\xd4\xdb", "rr"},              // 咱
    {"r", "\xd4\xdb\xc3\xc7", "rr"},      // 咱们
    {"r", "\xd7\xd4\xbc\xba", "rr"},      // 自己
    {"r", "\xc8\xcb\xbc\xd2", "rr"},      // 人家
    {"r", "\xb0\xb3", "rr"},              // 俺
    {"r", "\xb0\xb3\xc3\xc7", "rr"},      // 俺们
    {"r", "\xb4\xf3\xbc\xd2", "rr"},      // 大家
    {"r", "\xb1\xf0\xc8\xcb", "rr"},      // 别人
    {"r", "\xcb\xfb\xc8\xcb", "rr"},      // 他人
    {"r", "\xb1\xcb\xb4\xcb", "rr"},      // 彼此
    {"r", "\xb8\xf7\xd7\xd4", "rr"},      // 各自
    {"r", "\xd7\xd4\xc9\xed", "rr"},      // 自身
    {"r", "\xb1\xbe\xc9\xed", "rr"},      // 本身
    {"r", "\xd7\xd4\xb8\xf6\xb6\xf9", "rr"}, // 自个儿
    {"r", "\xd6\xee\xce\xbb", "rr"},      // 诸位
    {"r", "\xd5\xe2", "rz"},              // 这
    {"r", "\xc4\xc7", "rz"},              // 那
    {"r", "\xd5\xe2\xc0\xef", "rz"},      // 这里
    {"r", "\xc4\xc7\xc0\xef", "rz"},      // 那里
    {"r", "\xd5\xe2\xd0\xa9", "rz"},      // 这些
    {"r", "\xc4\xc7\xd0\xa9", "rz"},      // 那些
    {"r", "\xd5\xe2\xd1\xf9", "rz"},      // 这样
    {"r", "\xc4\xc7\xd1\xf9", "rz"},      // 那样
    {"r", "\xb4\xcb", "rz"},              // 此
    {"r", "\xb8\xc3", "rz"},              // 该
    {"r", "\xb1\xbe", "rz"},              // 本
    {"r", "\xd5\xe2\xb8\xf6", "rz"},      // 这个
    {"r", "\xc4\xc7\xb8\xf6", "rz"},      // 那个
    {"r", "\xd5\xe2\xd6\xd6", "rz"},      // 这种
    {"r", "\xc4\xc7\xd6\xd6", "rz"},      // 那种
    {"r", "\xc6\xe4", "rz"},              // 其
    {"r", "\xc6\xe4\xcb\xfb", "rz"},      // 其他
    {"r", "\xc6\xe4\xcb\xfc", "rz"},      // 其它
    {"r", "\xc6\xe4\xd3\xe0", "rz"},      // 其余
    {"r", "\xb1\xf0\xb5\xc4", "rz"},      // 别的
    {"r", "\xc3\xbf", "rz"},              // 每
    {"r", "\xb8\xf7", "rz"},              // 各
    {"r", "\xc4\xb3", "rz"},              // 某
    {"r", "\xc4\xb3\xd0\xa9", "rz"},      // 某些
    {"r", "\xc1\xed", "rz"},              // 另
    {"r", "\xb1\xcb", "rz"},              // 彼
    {"r", "\xd5\xe2\xca\xb1", "rzt"},     // 这时
    {"r", "\xc4\xc7\xca\xb1", "rzt"},     // 那时
    {"r", "\xb4\xcb\xca\xb1", "rzt"},     // 此时
    {"r", "\xb4\xcb\xbf\xcc", "rzt"},     // 此刻
    {"r", "\xd5\xe2\xbb\xe1\xb6\xf9", "rzt"}, // 这会儿
    {"r", "\xc4\xc7\xbb\xe1\xb6\xf9", "rzt"}, // 那会儿
    {"r", "\xd5\xe2\xb6\xf9", "rzs"},     // 这儿
    {"r", "\xc4\xc7\xb6\xf9", "rzs"},     // 那儿
    {"r", "\xd5\xe2\xb1\xdf", "rzs"},     // 这边
    {"r", "\xc4\xc7\xb1\xdf", "rzs"},     // 那边
    {"r", "\xb4\xcb\xb4\xa6", "rzs"},     // 此处
    {"r", "\xb4\xcb\xb5\xd8", "rzs"},     // 此地
    {"r", "\xc8\xe7\xb4\xcb", "rzv"},     // 如此
    {"r", "\xd5\xe2\xc3\xb4\xd1\xf9", "rzv"}, // 这么样
    {"r", "\xc4\xc7\xc3\xb4\xd1\xf9", "rzv"}, // 那么样
    {"r", "\xcb\xad", "ry"},              // 谁
    {"r", "\xca\xb2\xc3\xb4", "ry"},      // 什么
    {"r", "\xc4\xc4", "ry"},              // 哪
    {"r", "\xc4\xc4\xc0\xef", "ry"},      // 哪里
    {"r", "\xd4\xf5\xc3\xb4", "ry"},      // 怎么
    {"r", "\xd4\xf5\xd1\xf9", "ry"},      // 怎样
    {"r", "\xce\xaa\xca\xb2\xc3\xb4", "ry"}, // 为什么
    {"r", "\xb6\xe0\xc9\xd9", "ry"},      // 多少
    {"r", "\xbc\xb8", "ry"},              // 几
    {"r", "\xc4\xc4\xb8\xf6", "ry"},      // 哪个
    {"r", "\xc4\xc4\xd0\xa9", "ry"},      // 哪些
    {"r", "\xc9\xb6", "ry"},              // 啥
    {"r", "\xba\xce", "ry"},              // 何
    {"r", "\xce\xaa\xba\xce", "ry"},      // 为何
    {"r", "\xd5\xa6", "ry"},              // 咋
    {"r", "\xba\xce\xca\xb1", "ryt"},     // 何时
    {"r", "\xbc\xb8\xca\xb1", "ryt"},     // 几时
    {"r", "\xc4\xc4\xb6\xf9", "rys"},     // 哪儿
    {"r", "\xba\xce\xb4\xa6", "rys"},     // 何处
    {"r", "\xba\xce\xb5\xd8", "rys"},     // 何地
    {"r", "\xd4\xf5\xc3\xb4\xd1\xf9", "ryv"}, // 怎么样
    {"r", "\xc8\xe7\xba\xce", "ryv"},     // 如何
    {"r", "\xd4\xf5\xc3\xb4\xd7\xc5", "ryv"}, // 怎么着
};
// clang-format on

// "Ng" and the other morpheme tags: an upper-case class letter and 'g'.
bool IsMorphemeTag(const std::string& tag) {
  return tag.size() == 2 && isupper(static_cast<unsigned char>(tag[0])) && tag[1] == 'g';
}

}  // namespace

std::string RefineCorpusTag(const std::string& word, const std::string& tag) {
  if (IsMorphemeTag(tag)) {
    return std::string(1, static_cast<char>(tolower(static_cast<unsigned char>(tag[0])))) + "g";
  }
  for (const Refinement& r : kRefinements) {
    if (tag == r.coarse && word == r.word) return r.refined;
  }
  return tag;
}
