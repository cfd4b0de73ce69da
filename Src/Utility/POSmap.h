// POSmap.h: a tag map, the table that turns a one-byte tag identifier into a
// tag name and back.
//
// A map file is text with one tag per line in identifier order: the first
// white-space-delimited token of a line is the tag name, the rest of the line
// is ignored, and a line without a token takes no identifier. The analyser
// keeps four parallel maps (the same identifier names the same tag in each),
// so a tag can be printed at four levels of detail.
//
// Lookups are const and safe to run from several threads once loaded.
#ifndef ZIVOR_UTILITY_POSMAP_H_
#define ZIVOR_UTILITY_POSMAP_H_

class CPOSmap {
 public:
  // Longest tag name kept, in bytes; longer names are cut (never inside a
  // two-byte character).
  static constexpr int kMaxNameLen = 9;
  // Bytes a caller gives GetPOS(id, buffer): a name and its NUL.
  static constexpr int kNameBufferSize = kMaxNameLen + 1;

  CPOSmap() = default;
  virtual ~CPOSmap();
  CPOSmap(const CPOSmap&) = delete;
  CPOSmap& operator=(const CPOSmap&) = delete;

  // Reads a map file. False, keeping the previous table, when it cannot be
  // opened, holds a NUL byte (it is no text) or names no tag. At most 255
  // names are kept (identifier 255 means no tag).
  bool Load(const char* path);

  unsigned char GetItemCount() const { return m_nItemCount; }

  // The name of tag `id`; null when no table is loaded or id is out of range.
  // Only ids greater than the count are refused outright; the slot at the
  // count itself is always empty, so it also gives null.
  const char* GetPOS(unsigned char id) const;

  // Copies the name of `id` into buffer (kNameBufferSize bytes) and returns
  // 1; writes "un" and returns 0 when GetPOS(id) has no name.
  int GetPOS(unsigned char id, char* buffer) const;

  // The first id whose name equals `name` ignoring ASCII case; 255 when name
  // is null or empty, the map is empty or nothing matches.
  unsigned char GetID(const char* name) const;

 private:
  void Release();

  char** m_pData = nullptr;        // names by id, each malloc'ed; the slot
                                   // after the last name is always null
  unsigned char m_nItemCount = 0;  // number of names
};

#endif  // ZIVOR_UTILITY_POSMAP_H_
