// GbkDictCopy.h: a user dictionary text ("WORD [TAG]" lines) in the encoding
// of the run, copied into the GBK that the library's dictionary importers
// read.
//
// The conversion is the library's own (CCodeTran over the tables of the
// data directory), so the words become what the analysis sees: traditional
// characters turn simplified, as they do in the text analysed. Lines that are
// not well-formed in the encoding are reported on standard error and left
// out. The copy is a temporary file, removed with the object.
#ifndef ZIVOR_TOOLS_ZIVOR_GBKDICTCOPY_H_
#define ZIVOR_TOOLS_ZIVOR_GBKDICTCOPY_H_

#include <string>

#include "Encoding.h"

class GbkDictCopy {
 public:
  GbkDictCopy() = default;
  ~GbkDictCopy();
  GbkDictCopy(const GbkDictCopy&) = delete;
  GbkDictCopy& operator=(const GbkDictCopy&) = delete;

  // Copies `source`, read in `encoding` with the conversion tables of the
  // directory `data_dir` (a Data directory). False, with the reason in
  // *error, when `source` cannot be read or the copy written.
  bool Make(const std::string& source, const Encoding& encoding, const std::string& data_dir,
            std::string* error);

  // The GBK copy.
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

#endif  // ZIVOR_TOOLS_ZIVOR_GBKDICTCOPY_H_
