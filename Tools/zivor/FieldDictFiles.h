// FieldDictFiles.h: the field and granularity dictionaries zivor builds
// into its private data directory for one run: a domain word list given
// with --field-dict, and the granularity dictionary without words that the
// field pass needs when the coarse mode is off.
#ifndef ZIVOR_TOOLS_ZIVOR_FIELDDICTFILES_H_
#define ZIVOR_TOOLS_ZIVOR_FIELDDICTFILES_H_

#include <string>

#include "Encoding.h"

// Builds STEM.pdat and STEM.pos from the "WORD [TAG]" lines of `list`, read
// in `encoding`, with the tag set configured in the Data directory
// `data_dir`; with an empty `list`, a dictionary without words. False, with
// the reason in *error, on failure.
bool BuildFieldDict(const std::string& list, const Encoding& encoding,
                    const std::string& data_dir, const std::string& stem, std::string* error);

#endif  // ZIVOR_TOOLS_ZIVOR_FIELDDICTFILES_H_
