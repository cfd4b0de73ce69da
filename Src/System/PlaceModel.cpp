#include "System/PlaceModel.h"

bool CPlaceModel::Load(const std::string& dir, int bound, std::string* error) {
  const std::string roles = dir + "/ns.role", context = dir + "/ns.ctx",
                    automaton = dir + "/ns.fsa";
  if (!m_roles.Load(roles.c_str()) || m_roles.GetBound() != bound) {
    *error = roles;
    return false;
  }
  if (!m_context.Load(context.c_str(), false) || m_context.GetTableLen() != kPlaceRoleCount) {
    *error = context;
    return false;
  }
  if (!m_automaton.Load(automaton.c_str()) ||
      m_automaton.GetInputSetSize() != kPlaceRoleCount || !AcceptsOnlyPlaces()) {
    *error = automaton;
    return false;
  }
  return true;
}

bool CPlaceModel::AcceptsOnlyPlaces() const {
  bool any = false;
  for (int state = 0; state < m_automaton.GetStateCount(); ++state) {
    if (!m_automaton.IsAccepted(state)) continue;
    if (m_automaton.GetAcceptedPosId(state) != kPlaceTag) return false;
    any = true;
  }
  return any;
}
