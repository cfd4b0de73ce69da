#include "PlaceData.h"

#include "TestUtil.h"
#include "Utility/POSmap.h"

namespace testutil {

bool WritePlaceModel(const std::string& dir, const CPDAT& dict,
                     const std::vector<std::string>& role_lines, int role_count, int tag) {
  const struct {
    PlaceRole from, to;
    int count;
  } transitions[] = {
      {kPlaceRoleStart, kPlaceRoleOther, 20},  {kPlaceRoleStart, kPlaceRoleBefore, 10},
      {kPlaceRoleBefore, kPlaceRoleFirst, 10}, {kPlaceRoleFirst, kPlaceRoleMiddle, 2},
      {kPlaceRoleMiddle, kPlaceRoleLast, 2},   {kPlaceRoleFirst, kPlaceRoleLast, 8},
      {kPlaceRoleLast, kPlaceRoleAfter, 10},   {kPlaceRoleAfter, kPlaceRoleOther, 5},
      {kPlaceRoleAfter, kPlaceRoleEnd, 5},     {kPlaceRoleOther, kPlaceRoleOther, 100},
      {kPlaceRoleOther, kPlaceRoleBefore, 5},  {kPlaceRoleOther, kPlaceRoleEnd, 15},
  };
  CContextStat context;
  context.SetSymbol(static_cast<unsigned char>(role_count));
  for (const auto& t : transitions) context.Add(t.from, t.to, t.count);
  CPOS roles;
  CFSA automaton;
  WriteFile(dir + "/roles.txt", Gbk(Lines(role_lines)));
  WriteFile(dir + "/fsa.txt", "places\n3\nroles\n" + std::to_string(role_count) +
                                  "\naccepting\n2\ntags\n" + std::to_string(tag) +
                                  "\ntransitions\n0 2 1\n1 3 1\n1 4 2\n");
  return roles.Import((dir + "/roles.txt").c_str(), &dict, nullptr) > 0 &&
         roles.Save((dir + "/ns.role").c_str()) &&
         context.Save((dir + "/ns.ctx").c_str(), CPOSmap()) &&
         automaton.Import((dir + "/fsa.txt").c_str()) && automaton.Save((dir + "/ns.fsa").c_str());
}

}  // namespace testutil
