#include "Segment/PreProcess.h"

#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <initializer_list>
#include <new>

#include "Utility/Charset.h"
#include "Utility/PDAT.h"
#include "Utility/Utility.h"

// One character of the text: its code, byte length (0 past the end) and type.
struct CPreProcess::CharAt {
  int code = -1;
  int len = 0;
  int type = -1;
  char first = '\0';

  bool Exists() const { return len > 0; }
  bool IsType(int t) const { return len > 0 && type == t; }
  bool IsOneOf(std::initializer_list<int> types) const {
    if (len == 0) return false;
    for (const int t : types) {
      if (type == t) return true;
    }
    return false;
  }
  bool IsAscii(char c) const { return len == 1 && first == c; }
  // 'O' and 'o' also serve as zero inside numbers.
  bool IsZeroLetter() const { return IsAscii('O') || IsAscii('o'); }
};

// Reads the characters of a NUL-terminated text by offset. The end is found
// lazily, one character at a time, so a call never measures the whole rest of
// a long text; an offset is valid as long as it was reached by adding the
// lengths of characters that exist. Characters that would reach past
// kMaxSentenceBytes do not exist for the scanner: that closes a sentence.
class CPreProcess::Scanner {
 public:
  Scanner(const char* text, const CCharset* charset) : text_(text), charset_(charset) {}

  const char* text() const { return text_; }

  CharAt At(int pos) const {
    CharAt c;
    if (pos >= kMaxSentenceBytes) return c;
    const char* s = text_ + pos;
    const int len = Getchar(s, &c.code);
    if (len == 0 || len > kMaxSentenceBytes - pos) return c;
    c.len = len;
    // The code the character table is keyed by: a lone lead byte at the end
    // is keyed by the byte itself.
    const int key = c.code >= 0 ? c.code : static_cast<unsigned char>(s[0]);
    c.type = charset_ != nullptr ? charset_->GetType(key) : 0;
    c.first = s[0];
    return c;
  }
  // The character after the one at pos (none when there is none at pos).
  CharAt After(int pos) const {
    const CharAt c = At(pos);
    return c.Exists() ? At(pos + c.len) : CharAt();
  }

 private:
  const char* text_;
  const CCharset* charset_;
};

namespace {

constexpr const char kMonthPiece[] = "\xd4\xc2\xb7\xdd";  // 月份

// Whether an atom's handle is the class identifier `id` (an unresolved
// identifier, -1, names no class).
bool IsClass(int handle, int id) { return id != -1 && handle == id; }

}  // namespace

CPreProcess::CPreProcess(CCharset* charset, CPDAT* coreDict, CTrie* userDict)
    : m_pCharset(charset), m_pCoreDict(coreDict), m_pUserDict(userDict) {
  m_pVecCandidateHandle = static_cast<unsigned int*>(calloc(10, sizeof(unsigned int)));
  m_pVecCandidatePosition = static_cast<unsigned int*>(calloc(10, sizeof(unsigned int)));
  if (m_pVecCandidateHandle != nullptr && m_pVecCandidatePosition != nullptr) {
    m_nCadidateSize = 10;
  }
}

CPreProcess::~CPreProcess() {
  FreeGraph();
  free(m_pAtom);
  free(m_pVecCandidateHandle);
  free(m_pVecCandidatePosition);
}

void CPreProcess::FreeGraph() {
  free(m_pWordGraph);
  free(m_pWordCounter);
  m_pWordGraph = nullptr;
  m_pWordCounter = nullptr;
  m_nGraphLength = 0;
  m_nGraphCapacity = 0;
}

bool CPreProcess::ResetGraph(int length) {
  if (length > m_nGraphCapacity) {
    FreeGraph();
    m_pWordGraph = static_cast<word_t**>(malloc(sizeof(word_t*) * static_cast<size_t>(length)));
    m_pWordCounter = static_cast<int*>(malloc(sizeof(int) * static_cast<size_t>(length)));
    if (m_pWordGraph == nullptr || m_pWordCounter == nullptr) {
      FreeGraph();
      return false;
    }
    m_nGraphCapacity = length;
  }
  std::fill_n(m_pWordGraph, length, nullptr);
  std::fill_n(m_pWordCounter, length, 0);
  m_nGraphLength = length;
  m_vecLattice.clear();
  return true;
}

bool CPreProcess::ReserveAtoms(int count) {
  if (count <= m_nAtomCapacity) return true;
  int capacity = m_nAtomCapacity < 64 ? 64 : m_nAtomCapacity;
  while (capacity < count) capacity *= 2;
  void* grown = realloc(m_pAtom, sizeof(word_t) * static_cast<size_t>(capacity));
  if (grown == nullptr) return false;
  m_pAtom = static_cast<word_t*>(grown);
  m_nAtomCapacity = capacity;
  return true;
}

int CPreProcess::FindCode(int code) const {
  return code >= 0 && m_pCoreDict != nullptr ? m_pCoreDict->Find(code) : -1;
}

const char* CPreProcess::AtomSegment(const char* text) {
  if (text == nullptr) text = "";
  m_nAtomSize = 0;
  // Room for the start and end atoms; without it there is no atom list.
  if (!ReserveAtoms(2)) return text;
  const Scanner scan(text, m_pCharset);
  word_t& start = m_pAtom[0] = word_t();
  start.start = start.end = 0;
  start.handle = gSent_StartID;
  start.type = kStartAtomType;

  int count = 1;  // atoms so far, the start atom included
  int pos = 0;
  int dquotes = 0, squotes = 0;
  bool sentence_end = false;
  // Each atom takes at least one byte and the end atom needs one more slot;
  // when memory runs out the sentence is closed where it stands.
  while (!sentence_end && ReserveAtoms(count + 2)) {
    const CharAt c = scan.At(pos);
    if (!c.Exists()) break;
    word_t& atom = m_pAtom[count] = word_t();
    atom.start = pos;
    atom.end = pos + c.len;
    atom.type = static_cast<unsigned char>(c.type);
    atom.handle = FindCode(c.code);
    sentence_end = GroupAtom(scan, c, &atom, count, &dquotes, &squotes);
    word_t* current = &atom;
    if (IsClass(atom.handle, gUnknown_m_ID) && !FollowUpNumber(scan, &atom, count)) {
      current = &m_pAtom[count - 1];  // merged into the preceding prefix
    } else {
      ++count;
    }
    CheckDictionary(text, current);
    pos = current->end;
  }
  word_t& end = m_pAtom[count] = word_t();
  end.start = end.end = pos;
  end.handle = gSent_EndID;
  end.type = kEndAtomType;
  m_nAtomSize = count + 1;
  return text + pos;
}

bool CPreProcess::GroupAtom(const Scanner& scan, const CharAt& c, word_t* atom, int atomIndex,
                            int* dquotes, int* squotes) const {
  switch (c.type) {
    case kDelimiter:
    case kInnerDelimiter:
      GroupDelimiter(c, atom, dquotes, squotes);
      return false;
    case kSentenceEnd: {
      char wide[3];
      if (c.len == 1 && Delimiter2DictFormat(c.first, wide) && m_pCoreDict != nullptr) {
        atom->handle = m_pCoreDict->Find(wide);
      }
      // A full stop closes the sentence only after a few atoms, so that list
      // numbers and abbreviations do not cut every short phrase.
      return atomIndex > 5;
    }
    case kPunctuationRun: {
      int pos = atom->end;
      for (CharAt n = scan.At(pos); n.IsType(kPunctuationRun); n = scan.At(pos)) pos += n.len;
      atom->end = pos;
      atom->handle = gPunctation_WP_ID;
      return false;
    }
    case kDigit:
    case kDigitKindA:
    case kDigitKindB:
      ExtendDigitString(scan, atom, c.type);
      return false;
    case kNumberChar:
      atom->handle = gUnknown_m_ID;
      return false;
    case kLetter: {
      int pos = atom->end;
      for (CharAt n = scan.At(pos);
           n.IsOneOf({kInnerDelimiter, kDigit, kDigitKindA, kLetter, kDigitKindB});
           n = scan.At(pos)) {
        pos += n.len;
      }
      atom->end = pos;
      atom->handle = gUnknown_x_ID;
      return false;
    }
    case kNumeralOpener:
      ExtendNumeralOpener(scan, atom);
      return false;
    case kNumeral:
    case kNumeralB:
    case kNumeralC:
      ExtendNumeralString(scan, atom, c.type);
      return false;
    case kWhiteSpace:
      atom->handle = gSent_EndID;
      return true;
    default:
      return false;  // a one-character atom
  }
}

void CPreProcess::GroupDelimiter(const CharAt& c, word_t* atom, int* dquotes,
                                 int* squotes) const {
  // Straight quotation marks open and close in turn within one call.
  if (c.IsAscii('"')) {
    atom->handle = (*dquotes)++ % 2 == 0 ? gQuatation_LD_ID : gQuatation_RD_ID;
    return;
  }
  if (c.IsAscii('\'')) {
    atom->handle = (*squotes)++ % 2 == 0 ? gQuatation_LS_ID : gQuatation_RS_ID;
    return;
  }
  // ASCII punctuation stands in the dictionary in its full-width form.
  char wide[3];
  if (c.len == 1 && Delimiter2DictFormat(c.first, wide) && m_pCoreDict != nullptr) {
    atom->handle = m_pCoreDict->Find(wide);
  }
}

void CPreProcess::ExtendDigitString(const Scanner& scan, word_t* atom, int firstType) const {
  bool numeric = true;
  int pos = atom->end;
  for (;;) {
    const CharAt n = scan.At(pos);
    if (!n.Exists()) break;
    bool take = false;
    switch (n.type) {
      case kDigit:
      case kInnerDelimiter:
      case kPunctuationRun:
        take = true;
        break;
      case kDigitKindA:
        take = firstType != kDigitKindB;
        break;
      case kDigitKindB:
        take = firstType != kDigitKindA;
        break;
      case kLetter:
        take = true;
        if (!n.IsZeroLetter()) numeric = false;
        break;
      case kNumeralB:
        take = numeric;
        break;
      case kNumeralC:
        // A numeral that forms a word with the character after it (千克)
        // is left to that word.
        take = numeric && !scan.After(pos).IsType(kNumeralEnd);
        break;
      default:
        break;
    }
    if (!take) break;
    pos += n.len;
  }
  atom->end = pos;
  if (numeric) {
    atom->handle = gUnknown_m_ID;
  } else {
    atom->type = kLetterStringType;
    atom->handle = gUnknown_x_ID;
  }
}

void CPreProcess::ExtendNumeralOpener(const Scanner& scan, word_t* atom) const {
  int pos = atom->end;
  int last_type = -1;
  for (CharAt n = scan.At(pos); n.IsOneOf({kNumeralB, kNumeralC, kNumeralOpener});
       n = scan.At(pos)) {
    last_type = n.type;
    pos += n.len;
  }
  // 几 alone, or a run ending in another opener, is no number.
  if (last_type == -1 || last_type == kNumeralOpener) return;
  atom->end = pos;
  atom->handle = gUnknown_m_ID;
}

void CPreProcess::ExtendNumeralString(const Scanner& scan, word_t* atom, int firstType) const {
  const CharAt next = scan.At(atom->end);
  if (firstType == kNumeralC && next.IsType(kNumeralEnd)) return;  // one character
  bool number = !(next.IsType(kLetter) && !next.IsZeroLetter());
  int pos = atom->end;
  int last_start = -1, last_type = -1;  // the last character taken
  const auto take = [&](const CharAt& c) {
    last_start = pos;
    last_type = c.type;
    pos += c.len;
  };
  for (CharAt n = scan.At(pos); n.Exists(); n = scan.At(pos)) {
    if (n.IsOneOf({kInnerDelimiter, kPunctuationRun})) {
      number = false;  // 一二·九 names a date, not a quantity
      take(n);
    } else if (n.type == kConnector) {
      take(n);
      const CharAt after = scan.At(pos);
      if (after.Exists()) {
        if (after.type == kPunctuationRun) number = false;
        take(after);
      }
    } else if (n.type == kConnectorPair) {
      if (!scan.After(pos).IsType(kConnectorPairEnd)) break;
      take(n);
      take(scan.At(pos));
    } else if (n.type == kNumeralC) {
      if (scan.After(pos).IsType(kNumeralEnd)) break;
      take(n);
    } else if (n.IsOneOf({kNumeral, kNumeralB, kConnectorUnit}) || n.IsZeroLetter() ||
               n.IsAscii('0')) {
      take(n);
    } else {
      break;
    }
  }
  // A trailing connector belongs to what follows (十二点 is a time), not to
  // the number.
  if (last_type == kConnector || last_type == kConnectorUnit) pos = last_start;
  atom->end = pos;
  if (number) {
    atom->handle = gUnknown_m_ID;
    atom->type = kNumeralStringType;
  } else {
    atom->handle = gUnknown_t_ID;
  }
}

bool CPreProcess::FollowUpNumber(const Scanner& scan, word_t* atom, int atomIndex) {
  word_t& prev = m_pAtom[atomIndex - 1];
  if (atomIndex > 1 && (prev.type == kPrefixA || prev.type == kPrefixB)) {
    prev.end = atom->end;
    prev.handle = atom->handle;
    *atom = word_t();
    return false;
  }
  TakeUnit(scan, atom);
  return true;
}

void CPreProcess::TakeUnit(const Scanner& scan, word_t* atom) const {
  const CharAt unit = scan.At(atom->end);
  if (!unit.Exists()) return;
  const CharAt after = scan.At(atom->end + unit.len);
  const char* text = scan.text() + atom->start;
  const int length = atom->end - atom->start;
  if (unit.IsOneOf({kConnectorUnit, kConnectorPair, kDayUnit, kClockUnit, kTimeUnit})) {
    if (!IsDayTime(text, static_cast<unsigned int>(length))) return;
    // 3号楼 and 5分钱 are no dates or times.
    if ((unit.type == kTimeUnit && after.IsType(kUnitCancel)) ||
        (unit.type == kConnectorPair && after.IsOneOf({kUnitCancel, kUnitCancelB}))) {
      return;
    }
    atom->handle = gUnknown_t_ID;
    // Units are two-byte characters; the measured length keeps a table that
    // says otherwise from taking a byte that is not there.
    atom->end += unit.len;
    if (unit.len == 2 && after.len == 2 && memcmp(text + length, kMonthPiece, 4) == 0) {
      atom->end += 2;  // 三月份
    }
  } else if (unit.type == kYearUnit && !after.IsType(kYearCancel) && IsYearTime(text, length)) {
    atom->end += unit.len;
    atom->handle = gUnknown_t_ID;
  }
}

void CPreProcess::CheckDictionary(const char* text, word_t* atom) const {
  if (m_pCoreDict == nullptr ||
      !(IsClass(atom->handle, gUnknown_t_ID) || IsClass(atom->handle, gUnknown_m_ID))) {
    return;
  }
  const int handle =
      m_pCoreDict->Find(text + atom->start, static_cast<unsigned int>(atom->end - atom->start));
  if (handle != -1) atom->handle = handle;
}

bool CPreProcess::IsValidPosition(int atomIndex, int length) const {
  if (atomIndex < 0 || atomIndex >= m_nAtomSize) return false;
  const int target = m_pAtom[atomIndex].start + length;
  int i = atomIndex + 1;
  while (i < m_nAtomSize - 1 && m_pAtom[i].end < target) ++i;
  return i < m_nAtomSize && m_pAtom[i].end == target;
}

const char* CPreProcess::FullSegment(const char* text) {
  if (text == nullptr) text = "";
  const char* next = AtomSegment(text);
  if (m_nAtomSize < 3) return next;
  if (!ResetGraph(m_pAtom[m_nAtomSize - 1].start + 2)) return next;
  FindDictionaryWords(text);
  try {
    for (int i = 0; i < m_nAtomSize; ++i) BuildRow(i);
  } catch (const std::bad_alloc&) {
    FreeGraph();  // no half-built lattice
    return next;
  }
  LinkRows();
  return next;
}

void CPreProcess::LinkRows() {
  // The rows lie in the arena in atom order; their words stay where they
  // are until the next sentence.
  word_t* words = m_vecLattice.data();
  for (int i = 0; i < m_nAtomSize; ++i) {
    const int row = RowOf(i);
    m_pWordGraph[row] = words;
    words += m_pWordCounter[row];
  }
}

bool CPreProcess::HasSingleRow(const word_t& atom) const {
  if (IsClass(atom.handle, gUnknown_m_ID)) return atom.type != kNumeralStringType;
  if (IsClass(atom.handle, gUnknown_t_ID) || IsClass(atom.handle, gUnknown_x_ID)) return true;
  switch (atom.type) {
    case kDelimiter:
    case kSentenceEnd:
    case kInnerDelimiter:
    case kPunctuationRun:
    case kWhiteSpace:
      return true;
    default:
      return false;
  }
}

bool CPreProcess::LooksUpWords(int atomIndex) const {
  const bool boundary = atomIndex == 0 || atomIndex == m_nAtomSize - 1;
  return !boundary && !HasSingleRow(m_pAtom[atomIndex]);
}

void CPreProcess::FindDictionaryWords(const char* text) {
  const size_t atoms = static_cast<size_t>(m_nAtomSize);
  m_walkStrings.assign(atoms, nullptr);
  m_walkMinLens.assign(atoms, 0);
  for (int i = 0; i < m_nAtomSize; ++i) {
    if (!LooksUpWords(i)) continue;
    m_walkStrings[static_cast<size_t>(i)] = text + m_pAtom[i].start;
    m_walkMinLens[static_cast<size_t>(i)] = m_pAtom[i].end - m_pAtom[i].start;
  }
  m_walkFound.clear();
  if (m_pCoreDict != nullptr) {
    m_pCoreDict->GetWordsOfAll(m_walkStrings.data(), m_walkMinLens.data(), m_nAtomSize,
                               &m_walkFound);
  }
  // Grouped by atom, each atom's words in the order found (shortest first).
  m_dictFirst.assign(atoms + 1, 0);
  for (const CPDAT::PrefixWord& w : m_walkFound) ++m_dictFirst[static_cast<size_t>(w.source) + 1];
  for (size_t i = 0; i < atoms; ++i) m_dictFirst[i + 1] += m_dictFirst[i];
  m_dictWords.resize(m_walkFound.size());
  m_walkMinLens.assign(m_dictFirst.begin(), m_dictFirst.end() - 1);  // next free slot per atom
  for (const CPDAT::PrefixWord& w : m_walkFound) {
    m_dictWords[static_cast<size_t>(m_walkMinLens[static_cast<size_t>(w.source)]++)] = w;
  }
}

void CPreProcess::BuildRow(int atomIndex) {
  const word_t atom = m_pAtom[atomIndex];
  const size_t first = m_vecLattice.size();
  m_vecLattice.push_back(atom);
  if (LooksUpWords(atomIndex)) AddDictionaryWords(atomIndex);
  m_pWordCounter[RowOf(atomIndex)] = static_cast<int>(m_vecLattice.size() - first);
}

void CPreProcess::AddDictionaryWords(int atomIndex) {
  const word_t& atom = m_pAtom[atomIndex];
  const size_t i = static_cast<size_t>(atomIndex);
  for (int k = m_dictFirst[i]; k < m_dictFirst[i + 1]; ++k) {
    const CPDAT::PrefixWord& w = m_dictWords[static_cast<size_t>(k)];
    if (IsValidPosition(atomIndex, w.bytes)) AddWord(atom, w.handle, w.bytes);
  }
}

void CPreProcess::AddWord(const word_t& atom, int handle, int length) {
  word_t w;
  w.handle = handle;
  w.start = atom.start;
  w.end = atom.start + length;
  w.type = atom.type;
  w.value = 0.0;
  m_vecLattice.push_back(w);
}
