#include "SegmentTestData.h"

#include "TestUtil.h"

namespace segtest {

const std::vector<std::string>& SegmentData::Words() {
  static const std::vector<std::string> words = {
      "始##始", "末##末", "未##串", "未##人", "未##地", "未##团", "未##时", "未##数", "未##专",
      "“", "”", "‘", "’", "———", "一", "。", "，", "！", "？", "：", "；", "（", "）", "、",
      "％", "／", "研究", "研究生", "生命", "命", "起源", "生", "研", "究", "起", "源", "中国",
      "中国人", "人民", "人", "中", "国", "中国1", "中国123", "十分", "一些", "千", "克", "三",
      "第三", "年", "级", "号", "楼", "数", "万一", "万", "北京", "大学", "他", "说", "的",
      "是", "我们", "好", "你", "3号", "12月", "是人。我", "二十一世纪", "21世纪"};
  return words;
}

SegmentData::SegmentData() : charset_(new CCharset), dict_(new CPDAT) {
  ok_ = charset_->Load((std::string(ZIVOR_SOURCE_DIR) + "/Data/charset.type").c_str());
  dict_->AddWordInit();
  int handle = 1;
  for (const std::string& word : Words()) dict_->AddWord(testutil::Gbk(word).c_str(), handle++);
  dict_->AddWordComplete();
  testutil::ResolvePseudoWords(dict_.get());
}

SegmentData::~SegmentData() { testutil::ResolvePseudoWords(nullptr); }

int SegmentData::Handle(const std::string& utf8) const {
  return dict_->Find(testutil::Gbk(utf8).c_str());
}

long long SegmentData::LoadTables(const Counts& counts, const Counts& pairs, CUnigram* unigram,
                                  CBigram* bigram) const {
  std::string uni, bi, line;
  long long total = 0;
  for (const std::string& word : Words()) {
    int count = 0;
    for (const auto& [w, c] : counts) count = w == word ? c : count;
    line = word + " " + std::to_string(count) + "\n";
    uni += line;
    total += count;
  }
  uni += line;
  total += std::stoi(line.substr(line.find(' ')));
  for (const auto& [pair, count] : pairs) bi += pair + " " + std::to_string(count) + "\n";
  testutil::TempDir dir;
  testutil::WriteFile(dir.File("uni.txt"), testutil::Gbk(uni));
  testutil::WriteFile(dir.File("bi.txt"), testutil::Gbk(bi));
  unigram->Import(dir.File("uni.txt").c_str(), dict_.get());
  bigram->Import(dir.File("bi.txt").c_str(), dict_.get());
  return total;
}

std::string Describe(const std::string& gbkText, const word_t* atoms, int count) {
  const std::pair<int, const char*> classes[] = {
      {gUnknown_m_ID, "m"},      {gUnknown_t_ID, "t"},     {gUnknown_x_ID, "x"},
      {gPunctation_WP_ID, "wp"}, {gQuatation_LD_ID, "LD"}, {gQuatation_RD_ID, "RD"},
      {gQuatation_LS_ID, "LS"},  {gQuatation_RS_ID, "RS"}, {gSent_EndID, "end"}};
  std::string out;
  for (int i = 1; i + 1 < count; ++i) {
    const word_t& a = atoms[i];
    std::string name = a.handle == -1 ? "-" : "word";
    for (const auto& [id, cls] : classes) name = a.handle == id ? cls : name;
    out += (out.empty() ? "" : " ") + testutil::Utf8(gbkText.substr(a.start, a.end - a.start)) +
           "/" + name + ":" + std::to_string(a.type);
  }
  return out;
}

}  // namespace segtest
