#include "SegmentTestData.h"

#include <string>

#include "TestUtil.h"

namespace segtest {

const std::vector<std::string>& SegmentData::Words() {
  static const std::vector<std::string> words = {
      // The pseudo-words and fixed words the segmenter gives as handles.
      "始##始", "末##末", "未##串", "未##人", "未##地", "未##团", "未##时", "未##数", "未##专",
      "“", "”", "‘", "’", "———", "一",
      // Full-width punctuation that ASCII delimiters stand for.
      "。", "，", "！", "？", "：", "；", "（", "）", "、", "％", "／",
      // Words for lattices and paths.
      "研究", "研究生", "生命", "命", "起源", "生", "研", "究", "起", "源",
      "中国", "中国人", "人民", "人", "中", "国", "中国1", "中国123",
      "十分", "重要", "一些", "些", "人们", "千克", "千", "克", "三", "十",
      "月份", "月", "第三", "年级", "年", "级", "号码", "号", "楼", "数据", "数",
      "万一", "万", "北京", "大学", "北京大学", "学生", "他", "说", "的", "是",
      "我们", "我", "们", "好", "再见", "你", "3号", "12月", "是人。我", "二十一世纪", "21世纪"};
  return words;
}

SegmentData::SegmentData() : charset_(new CCharset), dict_(new CPDAT) {
  ok_ = charset_->Load((std::string(ZIVOR_SOURCE_DIR) + "/Data/charset.type").c_str());
  dict_->AddWordInit();
  int handle = 1;
  for (const std::string& word : Words()) dict_->AddWord(testutil::Gbk(word).c_str(), handle++);
  dict_->AddWordComplete();
  gSent_StartID = Handle("始##始");
  gSent_EndID = Handle("末##末");
  gUnknown_x_ID = Handle("未##串");
  gUnknown_nr_ID = Handle("未##人");
  gUnknown_ns_ID = Handle("未##地");
  gUnknown_nt_ID = Handle("未##团");
  gUnknown_t_ID = Handle("未##时");
  gUnknown_m_ID = Handle("未##数");
  gUnknown_nz_ID = Handle("未##专");
  gQuatation_LD_ID = Handle("“");
  gQuatation_RD_ID = Handle("”");
  gQuatation_LS_ID = Handle("‘");
  gQuatation_RS_ID = Handle("’");
  gPunctation_WP_ID = Handle("———");
  gOneID = Handle("一");
}

SegmentData::~SegmentData() {
  for (int* id : {&gSent_StartID, &gSent_EndID, &gUnknown_x_ID, &gUnknown_nr_ID, &gUnknown_ns_ID,
                  &gUnknown_nt_ID, &gUnknown_t_ID, &gUnknown_m_ID, &gUnknown_nz_ID,
                  &gQuatation_LD_ID, &gQuatation_RD_ID, &gQuatation_LS_ID, &gQuatation_RS_ID,
                  &gPunctation_WP_ID, &gOneID}) {
    *id = -1;
  }
}

int SegmentData::Handle(const std::string& utf8) const {
  return dict_->Find(testutil::Gbk(utf8).c_str());
}

std::string HandleClass(int handle) {
  const std::pair<int, const char*> classes[] = {
      {gUnknown_m_ID, "m"},       {gUnknown_t_ID, "t"},      {gUnknown_x_ID, "x"},
      {gPunctation_WP_ID, "wp"},  {gQuatation_LD_ID, "LD"},  {gQuatation_RD_ID, "RD"},
      {gQuatation_LS_ID, "LS"},   {gQuatation_RS_ID, "RS"},  {gSent_StartID, "begin"},
      {gSent_EndID, "end"}};
  for (const auto& [id, name] : classes) {
    if (handle == id) return name;
  }
  return handle == -1 ? "-" : "word";
}

std::vector<std::string> Describe(const std::string& gbkText, const word_t* atoms, int count) {
  std::vector<std::string> out;
  for (int i = 1; i + 1 < count; ++i) {
    const word_t& a = atoms[i];
    out.push_back(testutil::Utf8(gbkText.substr(a.start, a.end - a.start)) + "/" +
                  HandleClass(a.handle) + ":" + std::to_string(a.type));
  }
  return out;
}

}  // namespace segtest
