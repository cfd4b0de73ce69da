// ModelCharTagger.h: training of the character tagger (char.model, read by
// Src/System/CharModel.h).
//
// The training sequences are the runs of Chinese characters of the corpus
// tokens, each character labelled B, M, E or S by the token it belongs to
// (a person name counts as one word, as the evaluation counts it); a token
// with any other character ends a run. An averaged structured perceptron is
// trained over them for a fixed number of passes, the sentences visited in
// an order drawn from a fixed seed, so the same corpus gives the same model.
// The averaged weights are scaled to 16 bits and those that round to zero
// everywhere are dropped. Besides the weights the model keeps, for each
// character, the tag most words of two or more characters ending in it carry
// (each distinct word counted once, names left out), and the tag most words
// starting with it carry, each distinct full name (surname and given name)
// counting as a word tagged as names are.
#ifndef ZIVOR_TOOLS_MODEL_CHAR_TAGGER_H_
#define ZIVOR_TOOLS_MODEL_CHAR_TAGGER_H_

#include <map>
#include <set>
#include <string>
#include <vector>

#include "ModelCorpus.h"
#include "System/CharModel.h"

class CharTaggerTrainer {
 public:
  // Passes over the training sequences.
  static constexpr int kEpochs = 5;

  // `name_tag` is the tag of person names.
  explicit CharTaggerTrainer(int name_tag) : name_tag_(name_tag) {}

  void Add(const ModelSentence& sentence);
  // The trained model, with the least margin of a kept label set to
  // `margin` times the weights' scale.
  CCharModel::Data Train(double margin) const;

 private:
  struct Sequence {
    std::vector<int> codes;   // GBK codes
    std::vector<int> labels;  // CCharModel::Label
  };
  // Ids of the characters kept (at most kMaxChars, the most frequent), by
  // code; the codes in ascending order.
  std::map<int, int> CharIds(std::vector<int>* codes) const;
  // The most frequent tag of each code in `counts` (code -> tag -> words),
  // for each of `codes`.
  static std::vector<int> MostTags(const std::map<int, std::map<int, int>>& counts,
                                   const std::vector<int>& codes);

  const int name_tag_;

  std::vector<Sequence> sequences_;
  std::map<int, long> char_counts_;
  // Distinct words of two or more characters and their tags, names left out.
  std::map<std::string, std::map<int, int>> words_;
  std::set<std::string> names_;  // distinct full names
};

#endif  // ZIVOR_TOOLS_MODEL_CHAR_TAGGER_H_
