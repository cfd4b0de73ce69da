#include "MainSystemFixture.h"

#include <cstdio>
#include <mutex>

#include "MiniData.h"
#include "TestUtil.h"

namespace testutil {
namespace {

const char* const kMapFiles[4] = {"ZIVOR.map", "ZIVOR_First.map", "PKU.map", "PKU_First.map"};

bool LoadAll(MiniResources* r, const std::string& data) {
  const auto at = [&data](const char* name) { return (data + name); };
  bool ok = r->charset.Load(at("charset.type").c_str()) &&
            r->core.Load(at("CoreDict.pdat").c_str()) &&
            r->unigram.Load(at("CoreDict.unig").c_str()) &&
            r->bigram.Load(at("BiWord.big").c_str()) &&
            r->corePOS.Load(at("CoreDict.pos").c_str()) &&
            r->posContext.Load(at("ZIVOR.ctx").c_str(), false) &&
            r->roles.Load(at("nr.role").c_str()) &&
            r->roleContext.Load(at("nr.ctx").c_str(), false) &&
            r->fsa.Load(at("nr.fsa").c_str()) && r->userDict.Load(at("UserDict.pdat").c_str());
  for (int i = 0; i < 4; ++i) ok = ok && r->maps[i].Load(at(kMapFiles[i]).c_str());
  return ok;
}

}  // namespace

MiniResources* MiniResources::Get() {
  static MiniResources* resources = nullptr;
  static std::once_flag once;
  std::call_once(once, [] {
    static TempDir dir;
    static MiniResources loaded;
    if (!BuildMiniData(dir.path())) return;
    loaded.ok = LoadAll(&loaded, dir.path() + "/Data/");
    if (loaded.ok) resources = &loaded;
  });
  return resources;
}

std::unique_ptr<CMainSystem> MiniResources::NewSystem(const Options& o) {
  ResolvePseudoWords(&core);
  g_sPOSDelimiter = "/";
  g_sWordBoundary = "  ";
  g_bPOSTagger = o.tagger;
  g_bNERPerson = o.person;
  return std::make_unique<CMainSystem>(
      &charset, &core, &unigram, &bigram,
      o.ownUserDict != nullptr ? o.ownUserDict : o.userDict ? &userDict : nullptr, o.fieldDict,
      o.granDict, &corePOS, o.fieldPOS, o.granPOS, mapArray, &posContext, &roles,
      &roleContext, &fsa, nullptr);
}

std::string Utf8Result(const char* gbk) { return gbk != nullptr ? Utf8(gbk) : "(null)"; }

bool SmallDict::Build(const std::string& utf8Lines, const CPOSmap& map) {
  TempDir dir;
  const std::string lines = dir.File("lines.txt");
  WriteFile(lines, Gbk(utf8Lines));
  dict.SetImportProgress(false);
  return dict.Import(lines.c_str()) > 0 && pos.Import(lines.c_str(), &dict, &map) > 0;
}

}  // namespace testutil
