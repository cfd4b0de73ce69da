// Tests of ZIVOR_Init and ZIVOR_Exit: the configuration, the load order, the
// log lines of every failure, and repeated initialisation.
#include <gtest/gtest.h>

#include <string>

#include "MiniData.h"
#include "TestUtil.h"
#include "Utility/FSA.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"

namespace {

using testutil::Gbk;

TEST(MiniDataTest, BuildsLoadableTablesWithEveryPseudoWord) {
  testutil::TempDir dir;
  ASSERT_TRUE(testutil::BuildMiniData(dir.path()));
  const std::string data = dir.path() + "/Data/";
  CPDAT dict;
  ASSERT_TRUE(dict.Load((data + "CoreDict.pdat").c_str()));
  CPOSmap map;
  ASSERT_TRUE(map.Load((data + "ZIVOR.map").c_str()));
  EXPECT_EQ(108, map.GetItemCount());
  CPOS lexicon, roles;
  ASSERT_TRUE(lexicon.Load((data + "CoreDict.pos").c_str()));
  ASSERT_TRUE(roles.Load((data + "nr.role").c_str()));
  const struct {
    const char* word;
    const char* tag;
  } pseudo[] = {{"始##始", "begin"}, {"末##末", "end"},  {"未##串", "x"},  {"未##人", "nr"},
                {"未##地", "ns"},    {"未##团", "nt"},   {"未##时", "t"},  {"未##数", "m"},
                {"未##专", "nz"},    {"“", "wyz"},       {"”", "wyy"},     {"‘", "wyz"},
                {"’", "wyy"},        {"———", "wp"},      {"一", "m"}};
  for (const auto& p : pseudo) {
    const int handle = dict.Find(Gbk(p.word).c_str());
    ASSERT_GE(handle, 0) << p.word;
    EXPECT_STREQ(p.tag, map.GetPOS(lexicon.GetPOS(handle))) << p.word;
  }
  // The sentence markers carry exactly one tag and one role each.
  for (const char* marker : {"始##始", "末##末"}) {
    const int handle = dict.Find(Gbk(marker).c_str());
    int tags = 0, role_count = 0;
    lexicon.GetPOS(handle, &tags);
    roles.GetPOS(handle, &role_count);
    EXPECT_EQ(1, tags) << marker;
    EXPECT_EQ(1, role_count) << marker;
  }
  CFSA fsa;
  ASSERT_TRUE(fsa.Load((data + "nr.fsa").c_str()));
  // surname (2), given name (3, 4): both lengths of name end in a state tagged nr.
  const int after_given = fsa.NextState(fsa.NextState(0, 2), 3);
  EXPECT_TRUE(fsa.IsAccepted(after_given));
  EXPECT_EQ(24, fsa.GetAcceptedPosId(after_given));
  EXPECT_TRUE(fsa.IsAccepted(fsa.NextState(after_given, 4)));
}

}  // namespace
