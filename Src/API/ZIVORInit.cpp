// ZIVORInit.cpp: ZIVOR_Init, which reads Configure.xml and loads the shared
// resources from the data directory, and the teardown of those resources.
//
// Every problem is reported through the day's log (WriteLog with no
// directory, so the log lands in the current directory); a file that cannot
// be opened is reported as the message and then, on a line of its own, the
// file's full path.
#include <strings.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "zivor/ZIVOR.h"
#include "API/ZIVORState.h"
#include "System/CharModel.h"
#include "System/MainSystem.h"
#include "System/PlaceModel.h"
#include "System/Transliteration.h"
#include "Tagger/RoleGate.h"
#include "Utility/Bigram.h"
#include "Utility/Charset.h"
#include "Utility/CodeTran.h"
#include "Utility/ContextStat.h"
#include "Utility/FSA.h"
#include "Utility/Global.h"
#include "Utility/PDAT.h"
#include "Utility/POS.h"
#include "Utility/POSmap.h"
#include "Utility/Unigram.h"
#include "Utility/global_linux.h"
#include "Utility/trie.h"

namespace {

// Size of the buffer the current working directory is read into.
constexpr size_t kDirBufferSize = 1000;

void Log(const std::string& message) { WriteLog(message, nullptr); }

void LogWithPath(const std::string& message, const std::string& path) {
  Log(message);
  Log(path);
}

std::string DataFile(const std::string& name) { return g_sDefaultDir + "/" + name; }

template <class T>
void DeleteAndNull(T*& object) {
  delete object;
  object = nullptr;
}

// Replaces `object` with a fresh one; null when memory runs out.
template <class T>
T* Renew(T*& object) {
  delete object;
  object = new (std::nothrow) T;
  return object;
}

void DeletePOSmaps() {
  if (g_ppPOSmap == nullptr) return;
  for (int i = 0; i < kPOSmapCount; ++i) delete g_ppPOSmap[i];
  delete[] g_ppPOSmap;
  g_ppPOSmap = nullptr;
}

// --- Configuration ----------------------------------------------------------

// The settings of Configure.xml that only initialisation uses.
struct Switches {
  bool user_dict = false;
  bool field_dict = false;
  bool gran_dict = false;
};

// The value of `key` in the configuration text; false when the key is absent.
bool ConfigValue(const char* config, const char* key, std::string* value) {
  char buffer[kXMLValueSize];
  if (!GetXMLItemValue(config, key, buffer, sizeof buffer)) return false;
  *value = buffer;
  return true;
}

bool ConfigIs(const char* config, const char* key, const char* expected) {
  std::string value;
  return ConfigValue(config, key, &value) && strcasecmp(value.c_str(), expected) == 0;
}

void SetDefaults(const std::string& dir) {
  g_sDefaultDir = dir + "/Data";
  g_sDataPath = "Data";
  g_sTagset.clear();
  g_sPOSDelimiter = "/";
  g_sWordBoundary = "  ";
  g_bWordMerged = false;
  g_bNERPerson = true;
  g_bPOSTagger = true;
  g_nPOSPresent = 2;
  g_nPosMap = 0;
}

// The settings that decide what the rest of initialisation loads.
void ReadSettings(const char* config) {
  std::string value;
  if (ConfigValue(config, "TagSet", &value)) g_sTagset = value;
  if (ConfigValue(config, "POSDelimiter", &value)) g_sPOSDelimiter = value;
  if (ConfigValue(config, "WordBoundary", &value)) g_sWordBoundary = value;
  if (ConfigIs(config, "Merge", "on")) g_bWordMerged = true;
  if (ConfigIs(config, "Person", "off")) g_bNERPerson = false;
  if (ConfigIs(config, "Tagger", "off")) g_bPOSTagger = false;
}

// The requested tag presentation.
void ReadPresentation(const char* config) {
  if (ConfigIs(config, "POS", "None")) {
    g_nPOSPresent = 0;
  } else if (ConfigIs(config, "POS", "Upper")) {
    g_nPOSPresent = 1;
  }
}

// The directory that holds Data: the given one, else the working directory.
std::string BaseDirectory(const char* sInitDirPath) {
  if (sInitDirPath != nullptr && sInitDirPath[0] != '\0') return sInitDirPath;
  char buffer[kDirBufferSize];
  if (getcwd(buffer, sizeof buffer) == nullptr) return ".";
  return buffer;
}

// --- Loading ----------------------------------------------------------------

// A resource without which the library cannot work. `build_error` is logged
// when the object cannot be created (a generic open failure when null);
// "Cannot open file " and the path when the file does not load.
template <class T, class... LoadArgs>
bool LoadRequired(T*& object, const std::string& name, const char* build_error,
                  LoadArgs... args) {
  const std::string path = DataFile(name);
  if (Renew(object) == nullptr) {
    if (build_error != nullptr) {
      Log(build_error);
    } else {
      LogWithPath("Cannot open file ", path);
    }
    return false;
  }
  if (!object->Load(path.c_str(), args...)) {
    LogWithPath("Cannot open file ", path);
    return false;
  }
  return true;
}

// An optional resource: on failure the message and path are logged and the
// library goes on without it.
template <class T>
void LoadOptional(T*& object, const std::string& name, const char* error) {
  const std::string path = DataFile(name);
  if (Renew(object) != nullptr && object->Load(path.c_str())) return;
  LogWithPath(error, path);
  DeleteAndNull(object);
}

// A data file is named by the configuration, but always read from the data
// directory: a name that reaches elsewhere ("../x", "/etc/x") is refused.
bool IsPlainFileName(const std::string& name) {
  return !name.empty() && name.find('/') == std::string::npos && name != "." && name != "..";
}

// A tag map must name at least one tag: a file without any (or a directory,
// which opens as an empty stream) is as good as missing.
bool LoadPOSmap(int level, const std::string& name) {
  if (!IsPlainFileName(name)) {
    LogWithPath("Cannot open file ", DataFile(name));
    return false;
  }
  CPOSmap*& map = g_ppPOSmap[level];
  if (!LoadRequired(map, name, nullptr)) return false;
  if (map->GetItemCount() > 0) return true;
  LogWithPath("Cannot open file ", DataFile(name));
  return false;
}

// The caller's encoding: codes 1 to 4 get a code translator (4 loads no
// tables and reads its text as GBK), every other code is GBK.
constexpr int kFirstTranslatedCode = 1;
constexpr int kLastTranslatedCode = 4;

void CreateCodeTranslator(int encode) {
  DeleteCodeTranslator();
  if (encode < kFirstTranslatedCode || encode > kLastTranslatedCode) return;
  g_pCodeTranslator = new (std::nothrow) CCodeTran(g_sDefaultDir.c_str(), encode);
}

// The user, field and granularity dictionaries, when the configuration
// switches them on.
void LoadOptionalDictionaries(const Switches& on) {
  if (on.user_dict) LoadOptional(g_pUserDict, "UserDict.pdat", "Cannot open user dictionary");
  if (on.field_dict) {
    LoadOptional(g_pFieldDict, "FieldDict.pdat", "Cannot open field dictionary");
    if (g_bPOSTagger) {
      LoadOptional(g_pFieldPOS, "FieldDict.pos", "Cannot open filed dictionary POS data\n");
    }
  }
  if (on.gran_dict) {
    LoadOptional(g_pGranDict, "GranDict.pdat", "Cannot open Granularity dictionary");
    if (g_bPOSTagger) {
      LoadOptional(g_pGranPOS, "GranDict.pos", "Cannot open granularity dictionary POS data");
    }
  }
  // The field pass merges the words the granularity pass hands it: without
  // a granularity dictionary it would get none and every result would come
  // back empty. A granularity dictionary without words merges nothing.
  if (g_pFieldDict != nullptr && g_pGranDict == nullptr) {
    Log("Field dictionary not used: it needs a granularity dictionary (GranularityContorl on "
        "and GranDict.pdat; one without words merges nothing)");
    DeleteAndNull(g_pFieldDict);
    DeleteAndNull(g_pFieldPOS);
  }
}

// The handles of the pseudo-words and fixed words (GBK spellings); the first
// nine are required.
bool ResolvePseudoWords() {
  const struct {
    int* handle;
    const char* word;
    bool required;
  } words[] = {
      {&gSent_StartID, "\xca\xbc##\xca\xbc", true},      // 始##始
      {&gSent_EndID, "\xc4\xa9##\xc4\xa9", true},        // 末##末
      {&gUnknown_x_ID, "\xce\xb4##\xb4\xae", true},      // 未##串
      {&gUnknown_nr_ID, "\xce\xb4##\xc8\xcb", true},     // 未##人
      {&gUnknown_ns_ID, "\xce\xb4##\xb5\xd8", true},     // 未##地
      {&gUnknown_nt_ID, "\xce\xb4##\xcd\xc5", true},     // 未##团
      {&gUnknown_t_ID, "\xce\xb4##\xca\xb1", true},      // 未##时
      {&gUnknown_m_ID, "\xce\xb4##\xca\xfd", true},      // 未##数
      {&gUnknown_nz_ID, "\xce\xb4##\xd7\xa8", true},     // 未##专
      {&gQuatation_LD_ID, "\xa1\xb0", false},            // “
      {&gQuatation_RD_ID, "\xa1\xb1", false},            // ”
      {&gQuatation_LS_ID, "\xa1\xae", false},            // ‘
      {&gQuatation_RS_ID, "\xa1\xaf", false},            // ’
      {&gPunctation_WP_ID, "\xa1\xaa\xa1\xaa\xa1\xaa", false},  // ———
      {&gOneID, "\xd2\xbb", false},                      // 一
  };
  bool complete = true;
  for (const auto& w : words) {
    *w.handle = g_pCoreDict->Find(w.word);
    if (w.required && *w.handle == -1) complete = false;
  }
  if (!complete) Log("The Core Dictionary has been destroyed! ");
  return complete;
}

// The tables indexed by the core dictionary's handles are built for one
// dictionary: a table whose bound is another's comes from another build of
// the data and would answer for the wrong words.
bool BuiltForTheDictionary(int bound, const char* name) {
  if (bound == g_pCoreDict->GetLowerBound()) return true;
  LogWithPath("Cannot open file ", DataFile(name));
  return false;
}

// Character types, core dictionary, pseudo-words, unigram and bigram tables.
bool LoadCoreResources() {
  if (!LoadRequired(g_pCharset, "charset.type", "Cannot build object CCharset") ||
      !LoadRequired(g_pCoreDict, "CoreDict.pdat", "Cannot build object CPDAT ") ||
      !ResolvePseudoWords() ||
      !LoadRequired(g_pUnigram, "CoreDict.unig", "Cannot build object CUnigram! ") ||
      !BuiltForTheDictionary(g_pUnigram->GetBound(), "CoreDict.unig") ||
      !LoadRequired(g_pBiDict, "BiWord.big", "Cannot build object CBigram! ") ||
      !BuiltForTheDictionary(g_pBiDict->GetBound(), "BiWord.big")) {
    return false;
  }
  g_pBiDict->ReleaseFileArrays();  // the analysis reads the hash table only
  return true;
}

// The core tag lexicon, the tag statistics and the four tag maps
// (filled in the order 0, 3, 1, 2).
bool LoadTagger() {
  if (!LoadRequired(g_pCorePOS, "CoreDict.pos", nullptr) ||
      !BuiltForTheDictionary(g_pCorePOS->GetBound(), "CoreDict.pos") ||
      !LoadRequired(g_pPOSContext, "ZIVOR.ctx", nullptr, false)) {
    return false;
  }
  DeletePOSmaps();
  g_ppPOSmap = new (std::nothrow) CPOSmap*[kPOSmapCount]();
  if (g_ppPOSmap == nullptr) {
    LogWithPath("Cannot open file ", DataFile(g_sTagset));
    return false;
  }
  return LoadPOSmap(0, g_sTagset) && LoadPOSmap(3, "PKU_First.map") &&
         LoadPOSmap(1, "ZIVOR_First.map") && LoadPOSmap(2, "PKU.map");
}

// Role lexicon, role statistics and the name automaton.
bool LoadPersonRecognition() {
  return LoadRequired(g_pPersonRole, "nr.role", nullptr) &&
         BuiltForTheDictionary(g_pPersonRole->GetBound(), "nr.role") &&
         LoadRequired(g_pPersonContext, "nr.ctx", nullptr, false) &&
         LoadRequired(g_pPersonFSA, "nr.fsa", nullptr) &&
         (g_pPersonGate = CMainSystem::NewPersonGate(*g_pPersonRole, *g_pPersonFSA)) != nullptr;
}

// The recognisers of unknown words beyond the classic pipeline
// (docs/ACCURACY.md), each with its key in Configure.xml: "off" switches it
// off, "on" asks for it, and without the key it runs when its file is
// there. A file asked for that is missing, or one that is there but
// damaged, is logged and the analysis goes on without the recogniser.
enum class Switch { kOff, kOn, kIfPresent };

struct Recognisers {
  Switch transliteration = Switch::kIfPresent;
  Switch place = Switch::kIfPresent;
  Switch char_model = Switch::kIfPresent;
};

Switch ReadSwitch(const char* config, const char* key) {
  if (ConfigIs(config, key, "off")) return Switch::kOff;
  return ConfigIs(config, key, "on") ? Switch::kOn : Switch::kIfPresent;
}

Recognisers ReadRecognisers(const char* config) {
  Recognisers on;
  on.transliteration = ReadSwitch(config, "Transliteration");
  on.place = ReadSwitch(config, "Place");
  on.char_model = ReadSwitch(config, "CharModel");
  return on;
}

// Whether a recogniser whose file is `name` is to be loaded.
bool Wanted(Switch on, const char* name) {
  if (on != Switch::kIfPresent) return on == Switch::kOn;
  return access(DataFile(name).c_str(), F_OK) == 0;
}

// Creates a recogniser with `make` and loads its file `name` when the switch
// asks for it; logs a failure and leaves the pointer null.
template <class Recogniser, class Make>
void LoadRecogniser(Switch on, const char* name, const char* what, Recogniser** recogniser,
                    Make make) {
  if (!Wanted(on, name)) return;
  const std::string path = DataFile(name);
  *recogniser = make();
  if (*recogniser != nullptr && (*recogniser)->Load(path.c_str())) return;
  LogWithPath(std::string("Cannot open ") + what, path);
  DeleteAndNull(*recogniser);
}

// The place-name recogniser's three files (ns.role is the one looked for).
void LoadPlaceModel(Switch on) {
  if (!Wanted(on, "ns.role")) return;
  std::string error = DataFile("ns.role");
  if (Renew(g_pPlaceModel) != nullptr &&
      g_pPlaceModel->Load(g_sDefaultDir, g_pCoreDict->GetLowerBound(), &error)) {
    return;
  }
  LogWithPath("Cannot open place-name tables", error);
  DeleteAndNull(g_pPlaceModel);
}

void LoadUnknownWordRecognisers(const Recognisers& on) {
  LoadRecogniser(on.transliteration, "tr.char", "transliteration table", &g_pTransliteration,
                 [] { return new (std::nothrow) CTransliteration(g_pCoreDict); });
  LoadPlaceModel(on.place);
  LoadRecogniser(on.char_model, "char.model", "character model", &g_pCharModel,
                 [] { return new (std::nothrow) CCharModel(g_pCoreDict); });
}

// The new-word log, appended to; the library works without it.
void OpenNewWordLog() {
  const std::string path = DataFile("NewWord.lst");
  g_fpNewWord = OpenFile(path.c_str(), "a");
  if (!g_fpNewWord) LogWithPath("Cannot write", path);
}

// The main instance, the slot table and the pool's mutexes.
bool CreatePool() {
  g_vecZIVOR = static_cast<CMainSystem**>(calloc(kSlotStep, sizeof(CMainSystem*)));
  if (g_vecZIVOR == nullptr) return false;
  g_nCopyMemSize = kSlotStep;
  g_pZIVOR = NewMainSystem();
  g_vecZIVOR[0] = g_pZIVOR;
  pthread_mutex_init(&g_mutex, nullptr);
  pthread_mutex_init(&g_hWoker, nullptr);
  return g_pZIVOR != nullptr;
}

}  // namespace

void DeleteSharedResources() {
  DeleteAndNull(g_pCharset);
  DeleteAndNull(g_pCoreDict);
  DeleteAndNull(g_pUnigram);
  DeleteAndNull(g_pBiDict);
  DeleteUserDicts();
  DeleteAndNull(g_pFieldDict);
  DeleteAndNull(g_pGranDict);
  // The tagger's and the person recogniser's resources exist only when they
  // were configured on; null pointers are skipped.
  DeleteAndNull(g_pCorePOS);
  DeleteAndNull(g_pPOSContext);
  DeletePOSmaps();
  DeleteAndNull(g_pFieldPOS);
  DeleteAndNull(g_pGranPOS);
  DeleteAndNull(g_pPersonRole);
  DeleteAndNull(g_pPersonContext);
  DeleteAndNull(g_pPersonFSA);
  g_pPersonGate.reset();
  DeleteAndNull(g_pTransliteration);
  DeleteAndNull(g_pPlaceModel);
  DeleteAndNull(g_pCharModel);
}

void DeleteCodeTranslator() { DeleteAndNull(g_pCodeTranslator); }

namespace {

bool Init(const char* sInitDirPath, int encode) {
  if (g_bActive) return true;
  g_fpNewWord.reset();
  SetDefaults(BaseDirectory(sInitDirPath));

  const std::string config_path = DataFile("Configure.xml");
  char* text = nullptr;
  const int size = ReadFile(config_path.c_str(), &text);
  std::unique_ptr<char[]> config(text);
  if (size <= 0) {
    LogWithPath("Cannot Open Configure file", config_path);
    return false;
  }
  ReadSettings(config.get());
  CreateCodeTranslator(encode);
  LoadOptionalDictionaries(Switches{ConfigIs(config.get(), "UserDict", "on"),
                                    ConfigIs(config.get(), "FieldDict", "on"),
                                    ConfigIs(config.get(), "GranularityContorl", "on")});
  ReadPresentation(config.get());
  const Recognisers recognisers = ReadRecognisers(config.get());
  config.reset();

  if (!LoadCoreResources() || (g_bPOSTagger && !LoadTagger()) ||
      (g_bNERPerson && !LoadPersonRecognition())) {
    // Nothing of a failed initialisation stays behind: a later one starts
    // from scratch, whatever its configuration switches on.
    DeleteSharedResources();
    DeleteCodeTranslator();
    return false;
  }
  LoadUnknownWordRecognisers(recognisers);
  OpenNewWordLog();
  g_bActive = true;
  if (!CreatePool()) {
    ZIVOR_Exit();
    return false;
  }
  return true;
}

}  // namespace

bool ZIVOR_Init(const char* sInitDirPath, int encode) {
  const bool ready = Guarded(__func__, false, [&] { return Init(sInitDirPath, encode); });
  if (ready) return true;
  // A failure part-way leaves nothing behind for the next attempt.
  if (g_bActive) {
    ZIVOR_Exit();
  } else {
    DeleteSharedResources();
    DeleteCodeTranslator();
  }
  return false;
}
