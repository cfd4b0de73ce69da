#include "Segment/PreProcess.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "Utility/Charset.h"
#include "Utility/PDAT.h"
#include "Utility/Utility.h"

// One character of the text: its code (-1 past the end), byte length and type.
struct CPreProcess::CharAt {
  int code = -1;
  int len = 0;
  int type = -1;
  char first = '\0';

  bool Exists() const { return len > 0; }
  bool IsType(int t) const { return len > 0 && type == t; }
  // 'O', 'o' and '0' also serve as zero inside numbers.
  bool IsZeroLetter() const { return len == 1 && (first == 'O' || first == 'o'); }
};

class CPreProcess::Scanner {
 public:
  Scanner(const char* text, const CCharset* charset)
      : text_(text), len_(static_cast<int>(strlen(text))), charset_(charset) {}

  const char* text() const { return text_; }
  int length() const { return len_; }

  CharAt At(int pos) const {
    CharAt c;
    if (pos < 0 || pos >= len_) return c;
    c.len = Getchar(text_ + pos, &c.code);
    c.type = charset_->GetType(text_ + pos);
    c.first = text_[pos];
    return c;
  }
  // The character after the one at pos.
  CharAt After(int pos) const { return At(pos + At(pos).len); }

 private:
  const char* text_;
  int len_;
  const CCharset* charset_;
};

namespace {

bool IsOneOf(int type, std::initializer_list<int> types) {
  for (int t : types) {
    if (type == t) return true;
  }
  return false;
}

constexpr const char kMonth[] = "\xd4\xc2";  // 月
constexpr const char kFen[] = "\xb7\xdd";    // 份

}  // namespace

CPreProcess::CPreProcess(CCharset* charset, CPDAT* coreDict, CTrie* userDict)
    : m_pCharset(charset), m_pCoreDict(coreDict), m_pUserDict(userDict) {
  m_nCadidateSize = 10;
  m_pVecCandidateHandle = static_cast<unsigned int*>(calloc(m_nCadidateSize, sizeof(unsigned int)));
  m_pVecCandidatePosition =
      static_cast<unsigned int*>(calloc(m_nCadidateSize, sizeof(unsigned int)));
}

CPreProcess::~CPreProcess() {
  FreeGraph();
  free(m_pAtom);
  free(m_pVecCandidateHandle);
  free(m_pVecCandidatePosition);
}

void CPreProcess::FreeGraph() {
  for (int i = 0; i < m_nGraphLength && m_pWordGraph != nullptr; ++i) free(m_pWordGraph[i]);
  free(m_pWordGraph);
  free(m_pWordCounter);
  m_pWordGraph = nullptr;
  m_pWordCounter = nullptr;
  m_nGraphLength = 0;
}

void CPreProcess::ResetAtoms(int capacity) {
  free(m_pAtom);
  m_pAtom = static_cast<word_t*>(malloc(sizeof(word_t) * capacity));
  for (int i = 0; i < capacity; ++i) m_pAtom[i] = word_t();
  m_nAtomSize = 0;
}

const char* CPreProcess::AtomSegment(const char* text) {
  if (text == nullptr) text = "";
  const Scanner scan(text, m_pCharset);
  ResetAtoms(scan.length() + 2);
  word_t& start = m_pAtom[0];
  start.start = start.end = 0;
  start.handle = gSent_StartID;
  start.type = kStartAtomType;

  int count = 1;
  int pos = 0;
  int dquotes = 0, squotes = 0;
  bool sentence_end = false;
  while (pos < scan.length() && !sentence_end) {
    word_t& atom = m_pAtom[count];
    atom = word_t();
    const CharAt c = scan.At(pos);
    atom.start = pos;
    atom.end = pos + c.len;
    atom.type = static_cast<unsigned char>(c.type);
    atom.handle = c.code >= 0 ? m_pCoreDict->Find(c.code) : -1;
    sentence_end = GroupAtom(scan, &atom, count, &dquotes, &squotes);
    word_t* current = &atom;
    if (atom.handle == gUnknown_m_ID && gUnknown_m_ID != -1 &&
        !FollowUpNumber(scan, &atom, count)) {
      current = &m_pAtom[count - 1];  // merged into the preceding prefix
    } else {
      ++count;
    }
    CheckDictionary(text, current);
    pos = current->end;
  }
  word_t& end = m_pAtom[count];
  end = word_t();
  end.start = end.end = pos;
  end.handle = gSent_EndID;
  end.type = kEndAtomType;
  m_nAtomSize = count + 1;
  return text + pos;
}

bool CPreProcess::GroupAtom(const Scanner& scan, word_t* atom, int atomIndex, int* dquotes,
                            int* squotes) {
  const CharAt c = scan.At(atom->start);
  const int type = c.type;
  char wide[3];
  switch (type) {
    case kDelimiter:
    case kInnerDelimiter:
    case kSentenceEnd:
      if (type != kSentenceEnd && c.first == '"') {
        atom->handle = (*dquotes)++ % 2 == 0 ? gQuatation_LD_ID : gQuatation_RD_ID;
      } else if (type != kSentenceEnd && c.first == '\'') {
        atom->handle = (*squotes)++ % 2 == 0 ? gQuatation_LS_ID : gQuatation_RS_ID;
      } else if (c.len == 1 && Delimiter2DictFormat(c.first, wide)) {
        atom->handle = m_pCoreDict->Find(wide);
      }
      // A full stop ends the sentence only after a few atoms, so that
      // abbreviations and list numbers do not cut every short phrase.
      return type == kSentenceEnd && atomIndex > 5;
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
      ExtendDigitString(scan, atom, type);
      return false;
    case kNumberChar:
      atom->handle = gUnknown_m_ID;
      return false;
    case kLetter: {
      int pos = atom->end;
      for (CharAt n = scan.At(pos);
           n.Exists() && IsOneOf(n.type, {kInnerDelimiter, kDigit, kDigitKindA, kLetter,
                                          kDigitKindB});
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
      ExtendNumeralString(scan, atom, type);
      return false;
    case kWhiteSpace:
      atom->handle = gSent_EndID;
      return true;
    default:
      return false;
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
        // A numeral followed by its closing character starts a word of its own.
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
  for (CharAt n = scan.At(pos); n.Exists() && IsOneOf(n.type, {kNumeralB, kNumeralC,
                                                              kNumeralOpener});
       n = scan.At(pos)) {
    last_type = n.type;
    pos += n.len;
  }
  if (last_type == -1 || last_type == kNumeralOpener) return;  // stays one character
  atom->end = pos;
  atom->handle = gUnknown_m_ID;
}

void CPreProcess::ExtendNumeralString(const Scanner& scan, word_t* atom, int firstType) const {
  const CharAt next = scan.At(atom->end);
  if (firstType == kNumeralC && next.IsType(kNumeralEnd)) return;  // stays one character
  bool number = !(next.IsType(kLetter) && !next.IsZeroLetter());
  int pos = atom->end;
  int last_start = -1, last_type = -1;
  auto take = [&](const CharAt& c) {
    last_start = pos;
    last_type = c.type;
    pos += c.len;
  };
  for (;;) {
    const CharAt n = scan.At(pos);
    if (!n.Exists()) break;
    if (n.type == kInnerDelimiter || n.type == kPunctuationRun) {
      number = false;
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
    } else if (IsOneOf(n.type, {kNumeral, kNumeralB, kConnectorUnit}) ||
               (n.len == 1 && (n.first == 'O' || n.first == 'o' || n.first == '0'))) {
      take(n);
    } else {
      break;
    }
  }
  // A trailing connector belongs to what follows, not to the number.
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
  if (atomIndex - 1 > 0 && (prev.type == kPrefixA || prev.type == kPrefixB)) {
    prev.end = atom->end;
    prev.handle = atom->handle;
    *atom = word_t();
    return false;
  }
  const char* text = scan.text();
  const CharAt unit = scan.At(atom->end);
  if (!unit.Exists()) return true;
  const CharAt after = scan.At(atom->end + unit.len);
  const unsigned int length = static_cast<unsigned int>(atom->end - atom->start);
  if (IsOneOf(unit.type, {kConnectorUnit, kConnectorPair, kDayUnit, kClockUnit, kTimeUnit}) &&
      IsDayTime(text + atom->start, length)) {
    const bool cancelled =
        after.Exists() && ((unit.type == kTimeUnit && after.type == kUnitCancel) ||
                           (unit.type == kConnectorPair &&
                            IsOneOf(after.type, {kUnitCancel, kUnitCancelB})));
    if (!cancelled) {
      atom->handle = gUnknown_t_ID;
      atom->end += unit.len;
      if (unit.len == 2 && memcmp(text + atom->end - 2, kMonth, 2) == 0 && after.len == 2 &&
          memcmp(text + atom->end, kFen, 2) == 0) {
        atom->end += 2;  // 月份
      }
    }
  } else if (unit.type == kYearUnit && !after.IsType(kYearCancel) &&
             IsYearTime(text + atom->start, static_cast<int>(length))) {
    atom->end += unit.len;
    atom->handle = gUnknown_t_ID;
  }
  return true;
}

void CPreProcess::CheckDictionary(const char* text, word_t* atom) const {
  if (atom->handle == -1 || (atom->handle != gUnknown_t_ID && atom->handle != gUnknown_m_ID)) {
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
  const char* next = AtomSegment(text);
  if (m_nAtomSize < 3) return next;
  FreeGraph();
  const word_t& end_atom = m_pAtom[m_nAtomSize - 1];
  m_nGraphLength = end_atom.start + 2;
  m_pWordGraph = static_cast<word_t**>(calloc(m_nGraphLength, sizeof(word_t*)));
  m_pWordCounter = static_cast<int*>(calloc(m_nGraphLength, sizeof(int)));
  for (int i = 0; i < m_nAtomSize; ++i) BuildRow(text, i);
  return next;
}

void CPreProcess::BuildRow(const char* text, int atomIndex) {
  const word_t& atom = m_pAtom[atomIndex];
  const int row = atomIndex == 0 ? 0 : atom.start + 1;
  const bool single = atomIndex == 0 || atomIndex == m_nAtomSize - 1 ||
                      (atom.handle == gUnknown_m_ID && atom.type != kNumeralStringType) ||
                      atom.handle == gUnknown_t_ID || atom.handle == gUnknown_x_ID ||
                      IsOneOf(atom.type, {kDelimiter, kSentenceEnd, kInnerDelimiter,
                                          kPunctuationRun, kWhiteSpace});
  unsigned int matches = 0;
  if (!single) {
    m_pCoreDict->GetWords(text + atom.start, &m_pVecCandidateHandle, &m_pVecCandidatePosition,
                          &m_nCadidateSize, &matches, atom.end - atom.start);
  }
  word_t* words = static_cast<word_t*>(malloc(sizeof(word_t) * (matches + 1)));
  words[0] = atom;
  int count = 1;
  for (unsigned int k = 0; k < matches; ++k) {
    const int length = static_cast<int>(m_pVecCandidatePosition[k]);
    if (!IsValidPosition(atomIndex, length)) continue;
    word_t& w = words[count++];
    w = word_t();
    w.handle = static_cast<int>(m_pVecCandidateHandle[k]);
    w.start = atom.start;
    w.end = atom.start + length;
    w.type = atom.type;
  }
  m_pWordGraph[row] = words;
  m_pWordCounter[row] = count;
}
