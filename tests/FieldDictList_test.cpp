// FieldDictList_test.cpp: field and granularity dictionaries from word
// lists (FieldDictList), and the coarse dictionary `zivor-data coarse`
// collects from a corpus.
#include "FieldDictList.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <sstream>
#include <string>

#include "TestUtil.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"

namespace {

using testutil::Gbk;

class FieldDictListTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(tags_.Load((std::string(ZIVOR_SOURCE_DIR) + "/Data/ZIVOR.map").c_str()));
  }
  // The tag name of `word` in the dictionary STEM.pdat / STEM.pos, "-" when
  // the dictionary lacks the word.
  std::string TagOf(const std::string& stem, const std::string& word) const {
    auto dict = std::make_unique<CPDAT>();
    CPOS pos;
    EXPECT_TRUE(dict->Load((stem + ".pdat").c_str()) && pos.Load((stem + ".pos").c_str()));
    const int handle = dict->Find(Gbk(word).c_str());
    return handle < 0 ? "-" : tags_.GetPOS(pos.GetPOS(handle));
  }

  CPOSmap tags_;
  testutil::TempDir dir_;
};

TEST_F(FieldDictListTest, MalformedLinesAreRefusedWithTheReason) {
  const struct {
    std::string line;
    const char* error;  // "" when the line is accepted
  } cases[] = {
      {Gbk("心肌梗死 n"), ""},
      {Gbk("云计算"), ""},
      {" \t ", ""},
      {Gbk("心肌 梗死 n"), "expected \"WORD [TAG]\", found more fields"},
      {Gbk("心肌梗死 qq"), "unknown tag \"qq\""},
      {"\xff\xff n", "the word is not GBK text"},
      {std::string("a\0b n", 5), "the word is not GBK text"},
      {std::string(1001, 'a'), "word longer than 1000 bytes"},
  };
  for (const auto& c : cases) {
    FieldDictList list(tags_);
    std::string error;
    EXPECT_EQ(c.error[0] == '\0', list.AddLine(c.line, &error)) << c.line;
    EXPECT_EQ(c.error, error) << c.line;
  }
  FieldDictList list(tags_);
  std::istringstream in("ok n\r\nbad qq\n");
  std::string error;
  EXPECT_FALSE(list.Read(in, "list.txt", &error));
  EXPECT_EQ("list.txt:2: unknown tag \"qq\"", error);
}

TEST_F(FieldDictListTest, WrittenFilesGiveEveryWordItsTag) {
  FieldDictList list(tags_);
  std::istringstream in("\xef\xbb\xbf" + Gbk("心肌梗死 n\nCloud nz\ncloud v\n云计算\n"));
  std::string error;
  // The list converted line by line, as another encoding is.
  const auto convert = [](const std::string& line, std::string* gbk) {
    *gbk = line;
    return true;
  };
  ASSERT_TRUE(list.Read(in, "list", &error, convert)) << error;
  EXPECT_EQ(3u, list.size());
  EXPECT_EQ(1u, list.repeated());  // cloud: the first line wins
  // A link at the destination is replaced, never written through.
  const std::string kept = dir_.Write("kept.pdat", "keep");
  ASSERT_EQ(0, symlink(kept.c_str(), dir_.File("d.pdat").c_str()));
  ASSERT_TRUE(list.Write(dir_.File("d"), &error)) << error;
  EXPECT_EQ("keep", testutil::ReadFileBytes(kept));
  EXPECT_EQ("n", TagOf(dir_.File("d"), "心肌梗死"));
  EXPECT_EQ("nz", TagOf(dir_.File("d"), "CLOUD"));
  EXPECT_EQ("n", TagOf(dir_.File("d"), "云计算"));
  EXPECT_EQ("-", TagOf(dir_.File("d"), "心肌"));
  // No words: a dictionary that loads and finds nothing.
  ASSERT_TRUE(FieldDictList(tags_).Write(dir_.File("empty"), &error)) << error;
  EXPECT_EQ("-", TagOf(dir_.File("empty"), "云计算"));
}

// Compounds, with their most frequent outer tag, and word sequences seen on
// enough days that make up enough of their rarest word's occurrences.
TEST_F(FieldDictListTest, CoarseDictionaryHoldsCompoundsAndStableSequences) {
  std::string corpus;
  for (int day = 1; day <= 3; ++day) {
    const std::string id = "1998010" + std::to_string(day) + "-01-001-001/m  ";
    corpus += Gbk(id + "[中央/n  电台/n]nt  知识/n  产权/n  保护/vn  。/w  " +
                  (day == 1 ? "[中央/n  电台/n]nz  " : "") + "城市/n  规划/n  。/w\r\n");
  }
  std::string apart;
  for (int i = 0; i < 5; ++i) apart += "  城市/n  。/w  规划/v  。/w";
  corpus += Gbk("19980104-01-001-001/m  城市/n  规划/n  。/w" + apart + "\r\n");
  const std::string out = dir_.File("out");
  ASSERT_EQ(0, mkdir(out.c_str(), 0755));
  testutil::WriteFile(out + "/ZIVOR.map", testutil::ReadFileBytes(std::string(ZIVOR_SOURCE_DIR) +
                                                                   "/Data/ZIVOR.map"));
  ASSERT_EQ(0, testutil::RunDataTool({"coarse", "--corpus", dir_.Write("c.txt", corpus), "--out",
                                      out, "--min-count", "3", "--min-cohesion", "0.5"}));
  const std::string stem = out + "/GranDict";
  EXPECT_EQ("nt", TagOf(stem, "中央电台"));
  EXPECT_EQ("n", TagOf(stem, "知识产权"));      // 3 times on 3 days, always together
  EXPECT_EQ("vn", TagOf(stem, "知识产权保护"));  // the last word's tag
  EXPECT_EQ("-", TagOf(stem, "城市规划"));      // 4 of 9 城市 and 规划: not cohesive
  ASSERT_EQ(0, testutil::RunDataTool({"coarse", "--corpus", dir_.File("c.txt"), "--out", out,
                                      "--min-count", "3", "--min-days", "4"}));
  EXPECT_EQ("-", TagOf(stem, "知识产权"));  // three days only
  EXPECT_EQ(2, testutil::RunDataTool({"coarse", "--corpus", dir_.File("c.txt"), "--out", out,
                                      "--min-cohesion", "2"}));
}

}  // namespace
