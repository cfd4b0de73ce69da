// ZIVORUserDict.cpp: the exported calls that maintain the user dictionary.
//
// The dictionary is shared by every analysis instance, each of which holds a
// pointer to it. The calls here run with g_userDictLock held exclusively, so
// no pooled analysis is under way while the dictionary changes, and every
// instance is re-pointed (waiting for its current call) whenever the
// dictionary is created, replaced or dropped.
//
// A failed save drops the process-wide dictionary but does not re-point the
// instances, which keep using it: it is retired rather than deleted, and
// freed once every instance has been pointed elsewhere, or at exit.
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "zivor/ZIVOR.h"
#include "API/ZIVORState.h"
#include "System/MainSystem.h"
#include "Utility/Global.h"
#include "Utility/global_linux.h"
#include "Utility/trie.h"

namespace {

constexpr char kUserDictFile[] = "UserDict.pdat";

// Dictionaries dropped by a failed save that instances may still point at.
std::vector<std::unique_ptr<CTrie>> g_retiredUserDicts;

std::string UserDictPath() { return g_sDefaultDir + "/" + kUserDictFile; }


void LogWithPath(const char* message, const std::string& path) {
  WriteLog(message, nullptr);
  WriteLog(path, nullptr);
}

// Makes pDict the user dictionary of the process and of every instance;
// the dictionaries no instance can hold any more are freed.
void Install(CTrie* pDict) {
  g_pUserDict = pDict;
  PointInstancesAt(pDict);
  g_retiredUserDicts.clear();
}

int AddWord(const char* sWord) {
  if (g_pUserDict == nullptr) {
    CTrie* created = new (std::nothrow) CTrie();
    if (created == nullptr) return 0;
    Install(created);
  }
  return g_pUserDict->AddTrie(sWord != nullptr ? sWord : "") == 1 ? 1 : 0;
}

int SaveUserDict() {
  if (g_pUserDict == nullptr) return 0;
  const std::string path = UserDictPath();
  if (g_pUserDict->Save(path.c_str())) {
    PointInstancesAt(g_pUserDict);
    return 1;
  }
  LogWithPath("Cannot Save user dictionary  ", path);
  g_retiredUserDicts.emplace_back(g_pUserDict);
  g_pUserDict = nullptr;
  return 0;
}

}  // namespace

void PointInstancesAt(CTrie* pUserDict) {
  std::vector<CMainSystem*> instances;
  if (g_pZIVOR != nullptr) instances.push_back(g_pZIVOR);
  {
    PoolLock lock(&g_mutex);
    for (unsigned int i = 0; i < g_nCopyMemSize; ++i) {
      if (g_vecZIVOR[i] != nullptr && g_vecZIVOR[i] != g_pZIVOR) {
        instances.push_back(g_vecZIVOR[i]);
      }
    }
  }
  for (CMainSystem* instance : instances) instance->SetUserDict(pUserDict);
}

void DeleteUserDicts() {
  delete g_pUserDict;
  g_pUserDict = nullptr;
  g_retiredUserDicts.clear();
}

int ZIVOR_AddUserWord(const char* sWord) {
  return Guarded(__func__, 0, [&] {
    if (!g_bActive) return 0;
    UserDictWriter writer;
    return AddWord(InternalText(sWord).c_str());
  });
}

int ZIVOR_DelUsrWord(const char* sWord) {
  return Guarded(__func__, -1, [&] {
    if (!g_bActive || sWord == nullptr) return -1;
    UserDictWriter writer;
    if (g_pUserDict == nullptr) return -1;
    return g_pUserDict->DelTrie(InternalText(sWord).c_str());
  });
}

namespace {

unsigned int ImportUserDict(const char* sFilename) {
  UserDictWriter writer;
  // The old dictionary goes first, whatever the import gives.
  PointInstancesAt(nullptr);
  DeleteUserDicts();
  std::unique_ptr<CTrie> imported(new (std::nothrow) CTrie());
  const int count = imported != nullptr ? imported->Import(sFilename, g_pCoreDict) : 0;
  if (count <= 0) {
    LogWithPath("Cannot Open user dictionary txt ", sFilename != nullptr ? sFilename : "");
    return 0;
  }
  const std::string path = UserDictPath();
  if (!imported->Save(path.c_str())) {
    LogWithPath("Cannot Save user dictionary  ", path);
    return 0;
  }
  Install(imported.release());
  return static_cast<unsigned int>(count);
}

}  // namespace

unsigned int ZIVOR_ImportUserDict(const char* sFilename) {
  return Guarded(__func__, 0u, [&] { return g_bActive ? ImportUserDict(sFilename) : 0u; });
}

int ZIVOR_SaveTheUsrDic() {
  return Guarded(__func__, 0, [] {
    if (!g_bActive) return 0;
    UserDictWriter writer;
    return SaveUserDict();
  });
}

unsigned int ZIVOR_NWI_Result2UserDict() {
  return Guarded(__func__, 0u, [] {
    if (!g_bActive || g_pZIVOR == nullptr) return 0u;
    UserDictWriter writer;
    const std::vector<std::string> lines = g_pZIVOR->NWI_GetResultWords();
    for (const std::string& line : lines) AddWord(line.c_str());
    SaveUserDict();
    return static_cast<unsigned int>(lines.size());
  });
}
