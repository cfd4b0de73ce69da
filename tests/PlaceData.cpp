#include "PlaceData.h"

#include "TestUtil.h"
#include "Utility/POSmap.h"

namespace testutil {

bool WritePlaceModel(const std::string& dir, const CPDAT& dict,
                     const std::vector<std::string>& role_lines, int role_count, int tag) {
  // "from to count": start -> before -> first (-> middle) -> last -> after -> end.
  const int transitions[][3] = {{0, 9, 20}, {0, 6, 10}, {6, 2, 10}, {2, 3, 2},  {3, 4, 2},
                                {2, 4, 8},  {4, 7, 10}, {7, 9, 5},  {7, 1, 5},  {9, 9, 100},
                                {9, 6, 5},  {9, 1, 15}};
  CContextStat context;
  context.SetSymbol(static_cast<unsigned char>(role_count));
  for (const auto& t : transitions) context.Add(t[0], t[1], t[2]);
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
