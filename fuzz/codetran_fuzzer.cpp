// codetran_fuzzer: the code translator on the shipped tables.
//
// Input: one byte choosing the encoding (1 to 3: UTF-8, BIG5, GBKC), then the
// text. One translator per encoding is loaded from the shipped Data when first
// needed. ToGBK must give well-formed GBK without NUL bytes and offsets that
// map every GBK byte back into the text: gbk.size() + 1 of them, non-
// decreasing, within [0, len], the two bytes of a character at the same
// offset, the last one len. FromGBK of any bytes, and of ToGBK's result,
// must be well-formed in the caller's encoding; the line-by-line
// conversions must return their result's text.
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "Utility/CodeTran.h"

namespace {

const CCodeTran& Translator(int encoding) {
  static std::array<std::unique_ptr<CCodeTran>, 3> translators;
  std::unique_ptr<CCodeTran>& translator = translators[encoding - 1];
  if (!translator) {
    translator = std::make_unique<CCodeTran>(fuzz::ShippedDataDir().c_str(), encoding);
  }
  return *translator;
}

bool IsWellFormedIn(int encoding, const std::string& text) {
  if (encoding == fuzz::kUTF8) return fuzz::IsWellFormedUtf8(text);
  return fuzz::IsWellFormedDoubleByte(text, encoding == fuzz::kBIG5);
}

// The offsets of ToGBK's result for a `len`-byte text.
void CheckOffsets(const std::string& gbk, const std::vector<int>& offsets, size_t len) {
  fuzz::Require(offsets.size() == gbk.size() + 1, "not one offset per GBK byte and one more");
  fuzz::Require(offsets.back() == static_cast<int>(len), "the last offset is not the length");
  for (size_t i = 0; i < offsets.size(); ++i) {
    fuzz::Require(offsets[i] >= 0 && offsets[i] <= static_cast<int>(len), "an offset off the text");
    fuzz::Require(i == 0 || offsets[i - 1] <= offsets[i], "offsets going back");
  }
  for (size_t i = 0; i < gbk.size(); ++i) {
    if (static_cast<unsigned char>(gbk[i]) >= 0x80) {
      fuzz::Require(offsets[i] == offsets[i + 1], "a GBK character from two places");
      ++i;
    }
  }
}

std::string ToGBK(const CCodeTran& translator, const std::string& text) {
  std::string gbk;
  std::vector<int> offsets;
  fuzz::Require(translator.ToGBK(text.data(), text.size(), &gbk, &offsets), "ToGBK refuses");
  fuzz::Require(fuzz::IsWellFormedDoubleByte(gbk, false), "ToGBK gives malformed GBK");
  fuzz::Require(gbk.find('\0') == std::string::npos, "ToGBK gives a NUL byte");
  CheckOffsets(gbk, offsets, text.size());
  return gbk;
}

void CheckFromGBK(const CCodeTran& translator, const std::string& gbk, int encoding) {
  const std::string out = translator.FromGBK(gbk);
  if (!IsWellFormedIn(encoding, out)) fuzz::Fail("FromGBK gives malformed text");
}

void CheckLineConversions(const CCodeTran& translator, const std::string& text) {
  const std::string line = fuzz::CText(text);
  std::string result;
  fuzz::Require(translator.CodeToGBK(line.c_str(), result) == result.c_str(),
                "CodeToGBK does not return its result");
  fuzz::Require(translator.GBKToCode(line.c_str(), result) == result.c_str(),
                "GBKToCode does not return its result");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int encoding = fuzz::kUTF8 + input.Byte() % 3;
  const std::string text = input.Rest();
  const CCodeTran& translator = Translator(encoding);
  const std::string gbk = ToGBK(translator, text);
  CheckFromGBK(translator, gbk, encoding);
  CheckFromGBK(translator, text, encoding);
  CheckLineConversions(translator, text);
  return 0;
}
