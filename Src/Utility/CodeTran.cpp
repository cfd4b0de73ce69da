#include "Utility/CodeTran.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "Utility/BinaryIO.h"
#include "Utility/IDMaps.h"
#include "Utility/PDAT.h"
#include "Utility/WordList.h"
#include "Utility/global_linux.h"

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr size_t kByteOrderMarkLen = 3;
constexpr uint32_t kZeroWidthJoiner = 0x200D;
// What a character the caller's encoding lacks comes out as.
constexpr char kUtf8Replacement[] = "\xEF\xBF\xBD";

// The table files of one encoding, in the order of the translator's members.
struct TableFiles {
  const char* gbkDict;
  const char* gbkWords;
  const char* codeDict;
  const char* codeWords;
  const char* code2gbk;
  const char* gbk2code;
};

const TableFiles* FilesOf(int encoding) {
  static const TableFiles kFiles[] = {
      {"GBKA.pdat", "GBKA.wordlist", "UTF8.pdat", "UTF8.wordlist", "UTF2GBKA.map",
       "GBKA2UTF.map"},
      {"GBK.pdat", "GBK.wordlist", "BIG5.pdat", "BIG5.wordlist", "BIG2GBK.map", "GBK2BIG.map"},
      {"GBK.pdat", "GBK.wordlist", "GBKC.pdat", "GBKC.wordlist", "GBKC2GBK.map",
       "GBK2GBKC.map"},
  };
  return encoding >= 1 && encoding <= 3 ? &kFiles[encoding - 1] : nullptr;
}

// Loads one table, logging its path when it does not load; the table stays
// empty then.
template <class Table, class... Args>
std::unique_ptr<Table> LoadTable(const std::string& dir, const char* name, Args... args) {
  auto table = std::make_unique<Table>(args...);
  const std::string path = dir + "/" + name;
  if (!table->Load(path.c_str())) WriteLog(path + " cannot load!\n", nullptr);
  return table;
}

bool StartsWithByteOrderMark(const char* text, size_t len) {
  return len >= kByteOrderMarkLen && memcmp(text, kByteOrderMark, kByteOrderMarkLen) == 0;
}

// BIG5's two blocks of Chinese characters (frequent, then less frequent).
bool IsBig5Hanzi(uint32_t code) {
  return (code >= 0xA440 && code <= 0xC67E) || (code >= 0xC940 && code <= 0xF9D5);
}

}  // namespace

CCodeTran::CCodeTran(const char* sDataPath, int encoding) : m_nEncoding(encoding) {
  if (const TableFiles* files = FilesOf(encoding)) {
    const std::string dir = sDataPath != nullptr ? sDataPath : ".";
    constexpr bool kByteMode = true;
    m_pGBKSrcDict = LoadTable<CPDAT>(dir, files->gbkDict, kByteMode);
    m_pGBKWordList = LoadTable<CWordList>(dir, files->gbkWords);
    m_pCodeDict = LoadTable<CPDAT>(dir, files->codeDict, kByteMode);
    m_pCodeWordList = LoadTable<CWordList>(dir, files->codeWords);
    m_pCode2GBKMap = LoadTable<CIDMaps>(dir, files->code2gbk);
    m_pGBK2CodeMap = LoadTable<CIDMaps>(dir, files->gbk2code);
  }
  BuildCharMap(m_pCodeWordList.get(), Layout(), m_pCode2GBKMap.get(), m_pGBKWordList.get(),
               &m_toGBK);
  BuildCharMap(m_pGBKWordList.get(), TextLayout::kGbk, m_pGBK2CodeMap.get(),
               m_pCodeWordList.get(), &m_fromGBK);
}

CCodeTran::~CCodeTran() = default;

std::vector<std::string> CCodeTran::TableFileNames(int encoding) {
  const TableFiles* files = FilesOf(encoding);
  if (files == nullptr) return {};
  return {files->gbkDict, files->gbkWords, files->codeDict,
          files->codeWords, files->code2gbk, files->gbk2code};
}

TextLayout CCodeTran::Layout() const {
  switch (m_nEncoding) {
    case kUTF8:
      return TextLayout::kUtf8;
    case kBIG5:
      return TextLayout::kBig5;
    default:
      return TextLayout::kGbk;
  }
}

bool CCodeTran::IsGBKBased() const { return m_nEncoding != kUTF8 && m_nEncoding != kBIG5; }

// --- Line-by-line conversion --------------------------------------------------

const char* CCodeTran::GBKToCode(const char* sLine, std::string& result) const {
  return CodeTrans(sLine, result, m_pGBKSrcDict.get(), m_pGBK2CodeMap.get(),
                   m_pCodeWordList.get());
}

const char* CCodeTran::CodeToGBK(const char* sLine, std::string& result) const {
  return CodeTrans(sLine, result, m_pCodeDict.get(), m_pCode2GBKMap.get(),
                   m_pGBKWordList.get());
}

const char* CCodeTran::CodeTrans(const char* sLine, std::string& result, CPDAT* pSrcDict,
                                 CIDMaps* pIDMaps, CWordList* pDsnWordList) const {
  result.clear();
  if (sLine == nullptr) return result.c_str();
  size_t len = strlen(sLine);
  if (m_nEncoding == kUTF8 && StartsWithByteOrderMark(sLine, len)) {
    sLine += kByteOrderMarkLen;
    len -= kByteOrderMarkLen;
  }
  if (len > static_cast<size_t>(INT_MAX / 4)) return result.c_str();
  std::vector<char> text(sLine, sLine + len + 1);
  int segmentedCapacity = static_cast<int>(2 * len + 1);
  std::unique_ptr<char, decltype(&free)> segmented(
      static_cast<char*>(malloc(static_cast<size_t>(segmentedCapacity))), &free);
  if (!segmented) return result.c_str();

  for (char* cursor = text.data();;) {
    char* next = nullptr;
    char separator = '\0';
    char* line = StrLine(cursor, &next, &separator);
    if (line == nullptr) break;
    const char* pieces = line;
    if (pSrcDict != nullptr) {
      char* buffer = segmented.release();
      pSrcDict->MMSegment(line, nullptr, nullptr, &buffer, &segmentedCapacity);
      segmented.reset(buffer);
      pieces = buffer != nullptr ? buffer : "";
    }
    // Without a dictionary the line is one piece, passed through unchanged.
    for (const char* piece = pieces; *piece != '\0';) {
      const size_t pieceLen = pSrcDict != nullptr ? strcspn(piece, "\t") : strlen(piece);
      if (pieceLen > 0) {
        const std::string token(piece, pieceLen);
        const int handle = pSrcDict != nullptr ? pSrcDict->Find(token.c_str()) : -1;
        int count = 0;
        const CIDMaps::idmaps_info* maps =
            handle != -1 && pIDMaps != nullptr ? pIDMaps->GetMaps(handle, &count) : nullptr;
        const char* word = maps != nullptr && count > 0 && pDsnWordList != nullptr
                               ? pDsnWordList->GetWord(maps[0].handle2)
                               : nullptr;
        if (maps != nullptr && count > 0 && word == nullptr) {
          WriteLog("Cannot find map info of " + token, nullptr);
        }
        result += word != nullptr ? word : token.c_str();
      }
      piece += pieceLen;
      if (*piece == '\t') ++piece;
    }
    if (next == nullptr) break;
    result += separator;
    cursor = next + 1;
  }
  return result.c_str();
}

bool CCodeTran::GBKToCodeFile(const char* sSrcFile, const char* sDsnFile) const {
  return ConvertFile(sSrcFile, sDsnFile, true);
}

bool CCodeTran::CodeToGBKFile(const char* sSrcFile, const char* sDsnFile) const {
  return ConvertFile(sSrcFile, sDsnFile, false);
}

bool CCodeTran::ConvertFile(const char* sSrcFile, const char* sDsnFile, bool bToCode) const {
  char* buffer = nullptr;
  const int size = ReadFile(sSrcFile, &buffer);
  std::unique_ptr<char[]> text(buffer);
  if (size <= 0 && !text) return false;
  const FilePtr out = OpenFile(sDsnFile, "w");
  if (!out) return false;
  if (bToCode && m_nEncoding == kUTF8) fputs(kByteOrderMark, out.get());
  std::string result;
  const char* converted = bToCode ? GBKToCode(text.get(), result) : CodeToGBK(text.get(), result);
  fprintf(out.get(), "%s\n", converted);
  return true;
}

// --- Character-keeping conversion ----------------------------------------------

const char* CCodeTran::Target(const CIDMaps* pMap, const CWordList* pWords, int handle) {
  if (handle < 0 || pMap == nullptr || pWords == nullptr) return nullptr;
  int count = 0;
  const CIDMaps::idmaps_info* maps = pMap->GetMaps(handle, &count);
  if (maps == nullptr || count <= 0) return nullptr;
  const char* word = pWords->GetWord(maps[0].handle2);
  return word != nullptr && word[0] != '\0' ? word : nullptr;
}

const char* CCodeTran::StandInFor(const ScannedChar& c) const {
  if (c.kind == ScannedChar::kMalformed) return kStandInSymbol;
  switch (m_nEncoding) {
    case kUTF8:
      switch (ClassifyCodePoint(c.code)) {
        case ForeignKind::kSpace:
          return " ";
        case ForeignKind::kHan:
          return kStandInHan;
        case ForeignKind::kLetter:
          return kStandInLetter;
        case ForeignKind::kExtender:  // with nothing before it to extend
        case ForeignKind::kSymbol:
          return kStandInSymbol;
      }
      return kStandInSymbol;
    case kBIG5:
      return IsBig5Hanzi(c.code) ? kStandInHan : kStandInSymbol;
    default:
      return kStandInSymbol;
  }
}

void CCodeTran::AppendMatch(const char* text, size_t pos, size_t len, const char* target,
                            std::string* gbk, std::vector<int>* offsets) const {
  const size_t targetLen = strlen(target);
  const TextLayout layout = Layout();
  const bool charByChar =
      CountChars(layout, text + pos, len) == CountChars(TextLayout::kGbk, target, targetLen);
  size_t source = pos;
  for (size_t t = 0; t < targetLen;) {
    const size_t targetChar = ScanChar(TextLayout::kGbk, target + t, targetLen - t).len;
    gbk->append(target + t, targetChar);
    offsets->insert(offsets->end(), targetChar, static_cast<int>(source));
    t += targetChar;
    if (charByChar) source += ScanChar(layout, text + source, pos + len - source).len;
  }
}

void CCodeTran::BuildCharMap(const CWordList* pSrcWords, TextLayout layout, const CIDMaps* pMap,
                             const CWordList* pDsnWords, CharMap* pCharMap) {
  pCharMap->single.assign(CharMap::kKeys, nullptr);
  pCharMap->phraseStart.assign(CharMap::kKeys, false);
  if (pSrcWords == nullptr) return;
  for (int handle = 0; handle < pSrcWords->GetBound(); ++handle) {
    const char* word = pSrcWords->GetWord(handle);
    const char* target = word != nullptr ? Target(pMap, pDsnWords, handle) : nullptr;
    if (target == nullptr) continue;
    const size_t len = strlen(word);
    const ScannedChar first = ScanChar(layout, word, len);
    if (first.kind != ScannedChar::kMultiByte || first.code >= CharMap::kKeys) continue;
    if (static_cast<size_t>(first.len) == len) {
      pCharMap->single[first.code] = target;
    } else {
      pCharMap->phraseStart[first.code] = true;
    }
  }
  pCharMap->twoBytes.assign(CharMap::kKeys, 0);
  for (uint32_t code = 0; code < CharMap::kKeys; ++code) {
    const auto* target = reinterpret_cast<const unsigned char*>(pCharMap->single[code]);
    if (target == nullptr || pCharMap->phraseStart[code] || target[0] == 0 || target[1] == 0 ||
        target[2] != 0) {
      continue;
    }
    pCharMap->twoBytes[code] = static_cast<uint16_t>(target[0] << 8 | target[1]);
  }
}

const char* CCodeTran::Lookup(const CharMap& charMap, const CPDAT* pDict, const CIDMaps* pMap,
                              const CWordList* pDsnWords, const char* text, size_t len,
                              const ScannedChar& c, int* pMatched) {
  *pMatched = c.len;
  const bool keyed = c.code < CharMap::kKeys;
  if (keyed && !charMap.phraseStart[c.code]) return charMap.single[c.code];
  int handle = -1;
  const int match = pDict != nullptr ? pDict->GetMaxWord(text, static_cast<int>(len), &handle) : 0;
  const char* target = match >= c.len ? Target(pMap, pDsnWords, handle) : nullptr;
  if (target != nullptr) {
    *pMatched = match;
    return target;
  }
  // A longer string without a conversion of its own: the character alone.
  return keyed ? charMap.single[c.code] : nullptr;
}

bool CCodeTran::ExtendsPrevious(const ScannedChar& c, bool joinNext) const {
  if (c.kind != ScannedChar::kMultiByte || m_nEncoding != kUTF8) return false;
  return joinNext || ClassifyCodePoint(c.code) == ForeignKind::kExtender;
}

bool CCodeTran::ToGBK(const char* text, size_t len, std::string* gbk,
                      std::vector<int>* offsets) const {
  gbk->clear();
  offsets->clear();
  if (text == nullptr) len = 0;
  if (len > static_cast<size_t>(INT_MAX / 2)) return false;
  gbk->reserve(len + 1);
  offsets->reserve(len + 1);
  size_t pos = 0;
  if (m_nEncoding == kUTF8 && StartsWithByteOrderMark(text, len)) pos = kByteOrderMarkLen;
  const TextLayout layout = Layout();
  // Whether the last character may take the combining characters that
  // follow it, and whether a zero-width joiner asks the next one to join it.
  bool extendable = false;
  bool joinNext = false;
  const auto append = [&](const char* bytes, size_t count, bool canExtend) {
    gbk->append(bytes, count);
    for (size_t i = 0; i < count; ++i) offsets->push_back(static_cast<int>(pos));
    extendable = canExtend;
    joinNext = false;
  };
  while (pos < len) {
    const unsigned char byte = static_cast<unsigned char>(text[pos]);
    if (byte < 0x80) {
      // A NUL byte would end the text for the analysis: it is a blank.
      gbk->push_back(byte == 0 ? ' ' : static_cast<char>(byte));
      offsets->push_back(static_cast<int>(pos));
      extendable = byte > ' ' && byte != 0x7F;
      joinNext = false;
      ++pos;
      continue;
    }
    const ScannedChar c = ScanChar(layout, text + pos, len - pos);
    // (Without tables the map is empty.)
    const bool mapped = c.kind == ScannedChar::kMultiByte && c.code < m_toGBK.twoBytes.size();
    const uint16_t twoBytes = mapped ? m_toGBK.twoBytes[c.code] : 0;
    if (twoBytes != 0) {  // what the general case below does for it, without the lookup
      gbk->push_back(static_cast<char>(twoBytes >> 8));
      gbk->push_back(static_cast<char>(twoBytes & 0xFF));
      offsets->push_back(static_cast<int>(pos));
      offsets->push_back(static_cast<int>(pos));
      extendable = true;
      joinNext = false;
      pos += static_cast<size_t>(c.len);
      continue;
    }
    if (c.kind == ScannedChar::kMultiByte) {
      int matched = 0;
      const char* target = Lookup(m_toGBK, m_pCodeDict.get(), m_pCode2GBKMap.get(),
                                  m_pGBKWordList.get(), text + pos, len - pos, c, &matched);
      if (target != nullptr && matched == c.len && target[0] != '\0' && target[2] == '\0') {
        append(target, 2, true);  // one character for one: the common case
        pos += static_cast<size_t>(matched);
        continue;
      }
      if (target != nullptr) {
        AppendMatch(text, pos, static_cast<size_t>(matched), target, gbk, offsets);
        extendable = true;
        joinNext = false;
        pos += static_cast<size_t>(matched);
        continue;
      }
      if (IsGBKBased()) {  // the caller's text is GBK already
        append(text + pos, static_cast<size_t>(c.len), true);
        pos += static_cast<size_t>(c.len);
        continue;
      }
    }
    if (extendable && ExtendsPrevious(c, joinNext)) {
      // The character before now runs on over these bytes.
      joinNext = c.code == kZeroWidthJoiner;
      pos += static_cast<size_t>(c.len);
      continue;
    }
    const char* standIn = StandInFor(c);
    append(standIn, strlen(standIn), standIn[0] != ' ');
    pos += static_cast<size_t>(c.len);
  }
  offsets->push_back(static_cast<int>(len));
  return true;
}

void CCodeTran::FromGBK(const char* gbk, size_t len, std::string* out) const {
  const char* replacement = m_nEncoding == kUTF8 ? kUtf8Replacement : "?";
  for (size_t pos = 0; pos < len;) {
    size_t ascii = pos;
    while (ascii < len && static_cast<unsigned char>(gbk[ascii]) < 0x80) ++ascii;
    out->append(gbk + pos, ascii - pos);
    if ((pos = ascii) >= len) break;
    const ScannedChar c = ScanChar(TextLayout::kGbk, gbk + pos, len - pos);
    int matched = c.len;
    const char* target =
        c.kind == ScannedChar::kMultiByte
            ? Lookup(m_fromGBK, m_pGBKSrcDict.get(), m_pGBK2CodeMap.get(), m_pCodeWordList.get(),
                     gbk + pos, len - pos, c, &matched)
            : nullptr;
    if (target != nullptr) {
      out->append(target);
    } else if (c.kind == ScannedChar::kMultiByte && IsGBKBased()) {
      out->append(gbk + pos, 2);
    } else {
      out->append(replacement);
    }
    pos += static_cast<size_t>(matched);
  }
}

std::string CCodeTran::FromGBK(const std::string& gbk) const {
  std::string out;
  FromGBK(gbk.data(), gbk.size(), &out);
  return out;
}
