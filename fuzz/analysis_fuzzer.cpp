// analysis_fuzzer: the analysis of any text in any encoding.
//
// Input: one byte choosing the encoding (0 to 4, modulo 5), then the text.
// The library is initialised on the shipped data, again only when the
// encoding changes. Every form of the analysis (result text tagged and
// untagged, records with and without the user dictionary, the count-and-copy
// pair) must keep its records inside the text and in order, and tile the
// text when it has no line break and does not start with white space.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const int encoding = input.Byte() % fuzz::kEncodings;
  fuzz::Library::Get().Use(encoding);
  fuzz::AnalyseAndCheck(input.Rest(), encoding);
  return 0;
}
