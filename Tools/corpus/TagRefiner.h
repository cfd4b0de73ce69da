// TagRefiner.h: refinement of the training corpus's coarse tags into the
// analyser's tag set (Data/ZIVOR.map).
#ifndef ZIVOR_TOOLS_TAG_REFINER_H_
#define ZIVOR_TOOLS_TAG_REFINER_H_

#include <map>
#include <string>

class CPOSmap;

class TagRefiner {
 public:
  // `map` is the primary tag map; it must outlive the refiner.
  explicit TagRefiner(const CPOSmap& map);

  // The tag id of `word` (GBK) carrying the corpus tag `corpus_tag`.
  unsigned char Refine(const std::string& word, const std::string& corpus_tag) const;

  // The id of a tag name of the map (any ASCII case); 255 when unknown.
  unsigned char Id(const char* name) const;

 private:
  const CPOSmap& map_;
  // (coarse tag, word) -> refined tag id, from the closed lists.
  std::map<std::pair<std::string, std::string>, unsigned char> refined_;
};

#endif  // ZIVOR_TOOLS_TAG_REFINER_H_
