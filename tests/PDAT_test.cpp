#include "Utility/PDAT.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "TestUtil.h"
#include "Utility/BinaryIO.h"

namespace {

using testutil::Code;
using testutil::Gbk;
using testutil::SavedBytes;

// Builds a dictionary giving words[i] the handle i + 1.
std::unique_ptr<CPDAT> Build(const std::vector<std::string>& words, bool byteMode = false) {
  auto dict = std::make_unique<CPDAT>(byteMode);
  dict->AddWordInit();
  for (size_t i = 0; i < words.size(); ++i) dict->AddWord(words[i].c_str(), int(i) + 1);
  dict->AddWordComplete();
  return dict;
}

// Reference packer: the build algorithm taken literally (pending list scanned
// for the node with most children, bases tried one by one from 1), giving the
// dictionary file it must produce.
std::string NaivePdatFile(const std::vector<std::string>& words) {
  struct Node { int code, handle = -1, pos = 0; std::vector<int> kids; };
  std::vector<Node> nodes(1);
  std::vector<int> freq(65536, 0);
  for (size_t w = 0; w < words.size(); ++w) {
    const auto& s = words[w];
    for (size_t i = 0, node = 0; i < s.size();) {
      const unsigned char c = s[i];
      int code = c;
      if (c >= 128 && i + 1 < s.size()) code = c * 256 + (unsigned char)s[++i];
      if (code >= 'A' && code <= 'Z') code += 32;
      ++i;
      ++freq[code];
      auto& kids = nodes[node].kids;
      auto it = std::find_if(kids.begin(), kids.end(), [&](int k) { return nodes[k].code == code; });
      int next = it != kids.end() ? *it : int(nodes.size());
      if (it == kids.end()) { nodes[node].kids.push_back(next); nodes.push_back(Node{code, -1, 0, {}}); }
      if (i == s.size()) nodes[next].handle = int(w) + 1;
      node = next;
    }
  }
  std::vector<int> charset(65536, -1), order;
  for (int c = 0; c < 65536; ++c) if (freq[c] > 0) order.push_back(c);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return freq[a] > freq[b]; });
  for (size_t i = 0; i < order.size(); ++i) charset[order[i]] = int(i);

  std::vector<std::array<int, 3>> a;  // base, check, handle
  auto at = [&](int i) -> std::array<int, 3>& {
    if (i >= int(a.size())) a.resize(i + 1, {-1, -1, -1});
    return a[i];
  };
  auto isFree = [&](int i) { return i >= int(a.size()) || (a[i][0] == -1 && a[i][1] == -1); };
  int bound = 0;
  auto place = [&](int k, int pos, int parent) {
    nodes[k].pos = pos;
    at(pos)[1] = parent;
    if (nodes[k].kids.empty()) { at(pos)[0] = -pos; at(pos)[2] = nodes[k].handle; bound = std::max(bound, pos); }
  };
  std::vector<int> pending = nodes[0].kids;
  for (int k : pending) place(k, charset[nodes[k].code], -2);
  for (;;) {
    pending.erase(std::remove_if(pending.begin(), pending.end(), [&](int k) { return nodes[k].kids.empty(); }), pending.end());
    if (pending.empty()) break;
    size_t sel = 0;
    for (size_t i = 1; i < pending.size(); ++i)
      if (nodes[pending[i]].kids.size() > nodes[pending[sel]].kids.size()) sel = i;
    const Node& n = nodes[pending[sel]];
    const bool end = n.handle != -1;
    int b = (n.pos == 1 && end) ? 2 : 1;
    for (;; ++b) {
      if (end && b == n.pos) continue;
      if (std::all_of(n.kids.begin(), n.kids.end(), [&](int k) { return isFree(b + charset[nodes[k].code]); })) break;
    }
    at(n.pos)[0] = end ? -b : b;
    if (end) at(n.pos)[2] = n.handle;
    bound = std::max(bound, n.pos);
    const std::vector<int> kids = n.kids;
    for (int k : kids) place(k, b + charset[nodes[k].code], n.pos);
    pending[sel] = kids[0];
    pending.insert(pending.end(), kids.begin() + 1, kids.end());
  }
  std::vector<int> ints = charset;
  ints.push_back(bound);
  ints.push_back(int(words.size()));
  for (int i = 0; i <= bound; ++i) for (int v : at(i)) ints.push_back(v);
  return testutil::Ints(ints);
}

// Random words over GBK characters, ASCII of both cases and (rarely) a lone
// lead byte at the end. 'a' is by far the most frequent character and starts
// longer words, so no one-character word is the leaf at state 0.
std::vector<std::string> RandomWords(unsigned seed, int count, int alphabet) {
  std::mt19937 rng(seed);
  std::vector<std::string> symbols = {"a", "B", "b", "7", "x"};
  for (int i = 0; i < alphabet; ++i) symbols.push_back({char(0xB0 + i / 94), char(0xA1 + i % 94)});
  std::vector<std::string> words = {std::string(1000, 'a') + "b"};
  while (int(words.size()) < count) {
    if (rng() % 10 == 0) {  // duplicates and extensions
      words.push_back(words[rng() % words.size()] + (rng() % 2 ? "" : symbols[rng() % symbols.size()]));
      continue;
    }
    std::string w;
    for (int n = 1 + rng() % 5; n > 0; --n) w += symbols[rng() % symbols.size()];
    if (rng() % 40 == 0) w += '\xC1';
    words.push_back(w);
  }
  return words;
}

TEST(PDATTest, PackingMatchesLiteralAlgorithmByteForByte) {
  const struct { unsigned seed; int count, alphabet; } cases[] = {
      {1, 2, 3}, {2, 12, 4}, {3, 300, 8}, {4, 800, 60}, {5, 2000, 400}, {6, 1500, 1500}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.seed);
    const auto words = RandomWords(c.seed, c.count, c.alphabet);
    const auto dict = Build(words);
    EXPECT_EQ(SavedBytes(*dict), NaivePdatFile(words));
    // Every word keeps the handle of its last addition, ASCII case folded.
    for (size_t i = 0; i < words.size(); ++i) {
      const auto same = [&](const std::string& w) { return testutil::FoldAscii(w) == testutil::FoldAscii(words[i]); };
      const size_t last = std::find_if(words.rbegin(), words.rend(), same) - words.rbegin();
      EXPECT_EQ(dict->Find(words[i].c_str()), int(words.size() - last)) << words[i];
    }
  }
}

// The batched walk finds, for every string, exactly what GetWords finds for
// it alone, in the same order: on random dictionaries and every suffix of
// texts made of their words (ASCII of both cases, lone lead bytes at the end).
TEST(PDATTest, WalkingManyStringsTogetherFindsWhatEachFindsAlone) {
  for (const unsigned seed : {7u, 8u, 9u}) {
    SCOPED_TRACE(seed);
    const auto words = RandomWords(seed, 400, 30);
    const auto dict = Build(words);
    std::mt19937 rng(seed);
    std::string text;
    for (int i = 0; i < 60; ++i) text += words[rng() % words.size()].substr(0, 1 + rng() % 12);
    std::vector<const char*> strings;
    std::vector<int> minLens;
    for (size_t i = 0; i < text.size(); ++i) {
      strings.push_back(i % 7 == 3 ? nullptr : text.c_str() + i);  // null: not looked up
      minLens.push_back(int(rng() % 3));
    }
    std::vector<CPDAT::PrefixWord> found;
    dict->GetWordsOfAll(strings.data(), minLens.data(), int(strings.size()), &found);

    std::vector<std::vector<std::pair<int, int>>> batched(strings.size()), alone(strings.size());
    for (const auto& w : found) batched[size_t(w.source)].push_back({w.handle, w.bytes});
    unsigned int *handles = nullptr, *lengths = nullptr, capacity = 0, count = 0;
    for (size_t i = 0; i < strings.size(); ++i) {
      if (strings[i] == nullptr) continue;
      dict->GetWords(strings[i], &handles, &lengths, &capacity, &count, minLens[i]);
      for (unsigned k = 0; k < count; ++k) alone[i].push_back({int(handles[k]), int(lengths[k])});
    }
    free(handles);
    free(lengths);
    EXPECT_EQ(batched, alone);
    EXPECT_GT(found.size(), text.size() / 4);  // the texts do hold words
  }
}

class SmallDictTest : public ::testing::Test {
 protected:
  // Handles: 中 1, 中国 2, 中国人 3, 人民 4, 人 5, Hello 6, 国 7,
  // 中华人民共和国 8, 工人 9.
  SmallDictTest()
      : dict_(Build({Gbk("中"), Gbk("中国"), Gbk("中国人"), Gbk("人民"), Gbk("人"), "Hello",
                     Gbk("国"), Gbk("中华人民共和国"), Gbk("工人")})) {}
  std::unique_ptr<CPDAT> dict_;
};

TEST_F(SmallDictTest, FindExactWordsOnly) {
  const struct { std::string text; int len, handle; } cases[] = {
      {Gbk("中国人"), -1, 3}, {Gbk("中华人民共和国"), -1, 8},
      {Gbk("中华"), -1, -1},  // prefix only
      {Gbk("中国人民"), -1, -1}, {Gbk("民"), -1, -1}, {Gbk("好"), -1, -1}, {"", -1, -1},
      {Gbk("中国人"), 4, 2}, {Gbk("中国"), 0, -1}, {"hello", -1, 6}, {"HELLO", -1, 6},
      {Gbk("中国") + "\xD6", -1, -1},  // lone lead byte at the end
      {Gbk("中国") + std::string("\0", 1), 5, -1}, {std::string("\xD6\0\xB9\xFA", 4), 4, -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text) + " len " + std::to_string(c.len));
    EXPECT_EQ(c.len < 0 ? dict_->Find(c.text.c_str()) : dict_->Find(c.text.c_str(), c.len), c.handle);
  }
  EXPECT_EQ(dict_->Find(testutil::Code(Gbk("国"))), 7);
  EXPECT_EQ(dict_->Find(-5), -1);
  EXPECT_EQ(dict_->Find(65536), -1);
}

TEST_F(SmallDictTest, MaxWordAndAllPrefixWords) {
  const struct { std::string text; int length, handle; } cases[] = {
      {Gbk("中国人民"), 6, 3}, {Gbk("中华人民"), 2, 1}, {Gbk("好人"), 0, -1},
      {"HELLOworld", 5, 6}, {Gbk("中国") + "\xB9", 4, 2}, {"", 0, -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    int handle = 0;
    EXPECT_EQ(dict_->GetMaxWord(c.text.c_str(), &handle), c.length);
    EXPECT_EQ(handle, c.handle);
  }
  EXPECT_EQ(dict_->GetMaxWord("HELLOworld", nullptr), 5);

  unsigned int *handles = nullptr, *lengths = nullptr, capacity = 0, count = 99;
  EXPECT_EQ(dict_->GetWords(Gbk("中国人民").c_str(), &handles, &lengths, &capacity, &count, 0), 6);
  ASSERT_EQ(count, 3u);
  EXPECT_EQ(capacity, 5u);
  EXPECT_EQ(std::vector<unsigned>(handles, handles + 3), (std::vector<unsigned>{1, 2, 3}));
  EXPECT_EQ(std::vector<unsigned>(lengths, lengths + 3), (std::vector<unsigned>{2, 4, 6}));
  // minLen 2 drops the one-character word but not the longest length.
  EXPECT_EQ(dict_->GetWords(Gbk("中国人").c_str(), &handles, &lengths, &capacity, &count, 2), 6);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(handles[0], 2u);
  EXPECT_EQ(dict_->GetWords("", &handles, &lengths, &capacity, &count, 0), 0);
  EXPECT_EQ(count, 0u);
  free(handles);
  free(lengths);

  std::vector<std::string> chain;
  for (int n = 1; n <= 12; ++n) chain.push_back(std::string(n, 'q'));
  const auto qs = Build(chain);
  handles = lengths = nullptr;
  capacity = count = 0;
  EXPECT_EQ(qs->GetWords(std::string(20, 'q').c_str(), &handles, &lengths, &capacity, &count, 0), 12);
  EXPECT_EQ(count, 12u);
  EXPECT_EQ(capacity, 15u);  // grown in steps of five
  for (unsigned i = 0; i < count; ++i) EXPECT_EQ(lengths[i], i + 1);
  free(handles);
  free(lengths);
}

TEST(PDATTest, ByteModeHighCodesAndOneLetterDictionaries) {
  const auto bytes = Build({"AB", "ab", Gbk("中"), "\xFF\xFE"}, true);
  const auto high = Build({"\xFE\x50", "\xFF\xFF", "\xFE\x50\xFF\xFF"});
  const auto letters = Build({"x", "y", "yz"});
  const auto single = Build({"x"});
  const struct { CPDAT* dict; std::string word; int handle; } cases[] = {
      {bytes.get(), "AB", 1}, {bytes.get(), "ab", 2}, {bytes.get(), "Ab", -1},
      {bytes.get(), Gbk("中"), 3}, {bytes.get(), "\xFF\xFE", 4}, {bytes.get(), Gbk("中").substr(0, 1), -1},
      {high.get(), "\xFF\xFF", 2}, {high.get(), "\xFE\x50\xFF\xFF", 3},
      {letters.get(), "x", 1}, {letters.get(), "yz", 3},
      {single.get(), "x", -1}};  // index 0 as a leaf reads as base 0: no word
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.word));
    EXPECT_EQ(c.dict->Find(c.word.c_str()), c.handle);
  }
  EXPECT_EQ(bytes->GetMaxWord((Gbk("中") + "x").c_str(), nullptr), 2);
  EXPECT_EQ(high->GetMaxWord("\xFE\x50\xFF\xFF\xFF", nullptr), 4);
  EXPECT_TRUE(single->IsEmpty());
}

// Every lookup on whatever a damaged file left must stay inside the array.
void ExerciseLookups(CPDAT* dict, unsigned seed) {
  std::mt19937 rng(seed);
  for (int i = 0; i < 300; ++i) {
    std::string s;
    for (int n = rng() % 12; n > 0; --n) s += char(1 + rng() % 255);
    int handle;
    unsigned int *h = nullptr, *l = nullptr, cap = 0, count = 0;
    EXPECT_LE(dict->GetMaxWord(s.c_str(), &handle), int(s.size()));
    EXPECT_LE(dict->GetWords(s.c_str(), &h, &l, &cap, &count, 0), int(s.size()));
    dict->Find(s.c_str());
    dict->Find(int(rng() % 65536));
    dict->MMSegment(s.c_str());
    free(h);
    free(l);
  }
}

// The state array of a saved dictionary as (base, check, handle) triples.
std::vector<std::array<int, 3>> States(const std::string& file) {
  std::vector<std::array<int, 3>> states((file.size() - 262152) / 12);
  for (size_t i = 0; i < states.size(); ++i)
    for (size_t k = 0; k < 3; ++k)
      states[i][k] = LoadLE32((const unsigned char*)file.data() + 262152 + 12 * i + 4 * k);
  return states;
}

TEST_F(SmallDictTest, DamagedFilesAreRefusedAndTheDictionaryKept) {
  testutil::TempDir dir;
  const std::string good = SavedBytes(*dict_);
  const auto states = States(good);
  const size_t last = states.size() - 1;
  const auto field = [](size_t state, size_t k) { return 262152 + 12 * state + 4 * k; };
  const auto with = [&good](size_t offset, int value) { return testutil::Patched(good, offset, value); };
  // States by role: a leaf below another state, an inner state that ends no
  // word; the indexed characters.
  size_t leaf = 0, inner = 0;
  for (size_t i = 0; i < states.size(); ++i) {
    const auto& [base, check, handle] = states[i];
    if (check >= 0 && base == -int(i)) leaf = i;
    if (check >= 0 && base > 0) inner = i;
  }
  const auto index = [&good](int code) { return LoadLE32((const unsigned char*)good.data() + 4 * code); };
  int chars = 0;
  for (int code = 0; code < 65536; ++code) chars += index(code) >= 0;
  ASSERT_TRUE(leaf > 0 && inner > 0);
  // "a", the top character, starts no word: state 0 stays unused.
  const std::string hole = SavedBytes(*Build({"xa", "ya"}));
  ASSERT_EQ(States(hole)[0], (std::array<int, 3>{-1, -1, -1}));
  const size_t xa = size_t(States(hole)[1][0]);  // where "x" puts its "a"
  // 'h' moved to another code.
  const auto moved = [&](int code) { return testutil::Patched(with(4 * 'h', -1), 4 * code, index('h')); };
  // "a" at state 0, and states 1 and 2 each other's parent: a cycle.
  std::vector<int> cycle(65536, -1);
  cycle['a'] = 0;
  cycle.insert(cycle.end(), {2, 1, 0, -2, 1, 2, 2, -1, 1, 1, -1});
  const std::vector<std::string> damaged = {
      good.substr(0, good.size() - 1), good + '\0', std::string(), good.substr(0, 1000),
      with(262144, -7), with(262144, int(last) + 1), with(262148, -1),
      with(262148, 8),                       // nine word ends
      with(4 * Code(Gbk("国")), index(Code(Gbk("人")))),  // two characters, one index
      with(4 * Code(Gbk("国")), chars),      // an index skipped
      moved('H'), moved(0x0141),             // no word holds these codes
      with(field(leaf, 1), -5), with(field(leaf, 1), int(last) + 1),  // checks outside
      with(field(leaf, 1), int(leaf)),       // its own parent
      testutil::Patched(hole, field(xa, 1), 0),  // an unused parent
      with(field(states[leaf][1], 1), int(leaf)),  // a leaf's child
      // A word under the root at state 5, where no character index puts one.
      testutil::Patched(testutil::Patched(hole, 262144, 5), 262148, 3) + testutil::Ints({-5, -2, 1}),
      with(field(leaf, 0), -1 - int(leaf)),  // a word end that is no leaf, without children
      with(field(inner, 0), -int(inner)),    // a leaf with children
      with(field(leaf, 2), -1), with(field(leaf, 2), 10),  // handles outside 0 .. 9
      with(field(inner, 2), 3), testutil::Patched(hole, field(0, 0), 0),  // unused, not all -1
      testutil::Patched(hole, field(0, 2), 1),
      with(262144, int(last) + 1) + testutil::Ints({-1, -1, -1}),  // an unused last state
      testutil::Ints(cycle)};
  CPDAT loaded;
  testutil::ExpectEachRefused(dir.File("bad.pdat"), damaged, [&](const char* p) { return loaded.Load(p); });
  EXPECT_TRUE(loaded.IsEmpty());
  ASSERT_TRUE(loaded.Load(dir.Write("good.pdat", good).c_str()));
  EXPECT_EQ(loaded.GetItemCount(), 9);
  for (const char* w : {"中", "中国人", "人民", "中华人民共和国", "中华", "好"})
    EXPECT_EQ(loaded.Find(Gbk(w).c_str()), dict_->Find(Gbk(w).c_str())) << w;
  testutil::ExpectEachRefused(dir.File("bad.pdat"), damaged, [&](const char* p) { return loaded.Load(p); });
  EXPECT_FALSE(loaded.Load(dir.File("missing.pdat").c_str()));
  EXPECT_FALSE(loaded.Load(dir.path().c_str()));
  EXPECT_EQ(SavedBytes(loaded), good);  // a failed Load keeps the dictionary
  EXPECT_FALSE(loaded.Save(dir.File("no-such-dir/x.pdat").c_str()));
  // A dictionary of two-byte characters is no byte-mode dictionary.
  CPDAT bytes(true);
  EXPECT_FALSE(bytes.Load(dir.File("good.pdat").c_str()));
  ExerciseLookups(&bytes, 4);
  // A dictionary with an unused state loads, and so does one of nothing.
  ASSERT_TRUE(loaded.Load(dir.Write("hole.pdat", hole).c_str()));
  EXPECT_EQ(loaded.Find("ya"), 2);
  ASSERT_TRUE(loaded.Load(dir.Write("empty.pdat", SavedBytes(*Build({}))).c_str()));
  EXPECT_EQ(loaded.Find("ya"), -1);
}

std::string Segment(CPDAT* dict, const std::string& text, std::vector<int>* handles = nullptr,
                    bool ngram = false) {
  int *h = nullptr, hcap = 0, cap = 0;
  char* out = nullptr;
  const int n = dict->MMSegment(text.c_str(), handles ? &h : nullptr, &hcap, &out, &cap, ngram);
  if (handles) handles->assign(h, h + n);
  std::string result(out);
  free(h);
  free(out);
  return result;
}

TEST_F(SmallDictTest, MMSegmentCutsLongestMatches) {
  const struct { std::string text, cut; std::vector<int> handles; } cases[] = {
      {"", "", {}},
      {Gbk("中国人民中华人民共和国国"), Gbk("中国人\t民\t中华人民共和国\t国\t"), {3, 8, 7}},
      // 中华 is a prefix only: 中 alone is emitted, scanning restarts at 华.
      {Gbk("中华民"), Gbk("中\t华\t民\t"), {1}},
      {"foo,bar baz", "foo\t,\tbar\t \tbaz\t", {}},
      {"HELLOx" + Gbk("人民"), "HELLO\tx\t" + Gbk("人民") + "\t", {6, 4}},
      {"ab" + Gbk("好") + "--", "ab\t" + Gbk("好") + "\t-\t-\t", {}},
      {Gbk("人") + "\xD6", Gbk("人") + "\t\xD6\t", {5}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    std::vector<int> handles;
    EXPECT_EQ(Segment(dict_.get(), c.text, &handles), c.cut);
    EXPECT_EQ(handles, c.handles);
  }
  EXPECT_EQ(std::string(dict_->MMSegment(Gbk("人民人").c_str())), Gbk("人民\t人\t"));
}

TEST(PDATTest, MMSegmentNgramMode) {
  const auto dict = Build({"123", "ab", "9"});
  std::vector<int> handles;
  EXPECT_EQ(Segment(dict.get(), "12345 AbC 9 x", &handles, true),
            "123\t234\t345\t \tab\tbc\t \t9\t \tx\t");
  EXPECT_EQ(handles, (std::vector<int>{1, 2, 3}));
  // Long runs produce more output than the default buffer size allows.
  EXPECT_EQ(Segment(dict.get(), std::string(5000, '7'), nullptr, true).size(), 4u * 4998);
}

TEST(PDATTest, ImportReadsFirstTokenPerLine) {
  testutil::TempDir dir;
  const std::string longLine = "tail" + std::string(3100, 'z') + " zzz\r\nlast\r\n";
  const std::string list =
      dir.Write("words.txt", Gbk("中国 n 10\r\n\r\n   \r\n  人民\t5\r\nskip\r\n中国\r\n") + longLine);
  CPDAT exclude;
  exclude.SetImportProgress(false);
  ASSERT_EQ(exclude.Import(dir.Write("ex.txt", "skip\n").c_str()), 1);

  CPDAT dict;
  testing::internal::CaptureStdout();
  EXPECT_EQ(dict.Import(list.c_str(), &exclude), 5);
  const std::string printed = testing::internal::GetCapturedStdout();
  const std::string head = Gbk("1\t中国 Completed!\n2\t人民 Completed!\n3\t中国 Completed!\n");
  EXPECT_EQ(printed.substr(0, head.size()), head);
  EXPECT_EQ(dict.GetItemCount(), 5);
  EXPECT_EQ(dict.Find(Gbk("中国").c_str()), 3);  // duplicate: the later handle
  EXPECT_EQ(dict.Find(Gbk("人民").c_str()), 2);
  EXPECT_EQ(dict.Find("skip"), -1);
  EXPECT_EQ(dict.Find("last"), 5);  // the long line ends where it should
  EXPECT_EQ(dict.Find("zzz"), -1);
  EXPECT_EQ(dict.GetMaxWord(("tail" + std::string(3100, 'z')).c_str(), nullptr), 3071);

  CPDAT empty;
  EXPECT_EQ(empty.Import(dir.Write("blank.txt", "\n\r\n").c_str()), 0);
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_EQ(SavedBytes(empty).size(), 262152u + 12);
  EXPECT_EQ(empty.Import(dir.File("missing.txt").c_str()), 0);
}

TEST_F(SmallDictTest, FileSegmentAndExport) {
  testutil::TempDir dir;
  EXPECT_GT(dict_->FileSegment(dir.Write("in.txt", Gbk("中国人民,hello")).c_str(), dir.File("out.txt").c_str()), 0);
  EXPECT_EQ(testutil::ReadFileBytes(dir.File("out.txt")), Gbk("中国人\t民\t,\thello\t\n"));
  EXPECT_EQ(dict_->FileSegment(dir.File("none.txt").c_str(), dir.File("o.txt").c_str()), 0);

  ASSERT_TRUE(dict_->Export(dir.File("dump.txt").c_str()));
  const std::string dump = testutil::ReadFileBytes(dir.File("dump.txt"));
  EXPECT_EQ(dump.find("LowerBound=" + std::to_string(dict_->GetLowerBound()) + "\nm_LowerChar="), 0u);
  EXPECT_NE(dump.find("\tCharset Size=12\nChar\tCharDec\tRank\tFrequency\n"), std::string::npos);
  EXPECT_NE(dump.find(std::to_string(testutil::Code(Gbk("中"))) + "\t" + Gbk("中") + "\t2\t4\n"), std::string::npos);
  const size_t states = dump.find("nID\tBase\tCheck\tHandle\n");
  ASSERT_NE(states, std::string::npos);
  EXPECT_EQ(std::count(dump.begin() + states, dump.end(), '\n'), dict_->GetLowerBound() + 2);
}

}  // namespace
