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
  TabulatePieceRoles();
  return true;
}

void CPlaceModel::TabulatePieceRoles() {
  m_pieceRoles.Build(m_roles, 0, [](const POS_info* roles, int n) {
    unsigned bits = 0;
    for (int k = 0; k < n; ++k) {
      const unsigned char role = roles[k].POS_id;
      if (role >= kPlaceRoleFirst && role <= kPlaceRoleLast) {
        bits |= PieceBit(static_cast<PlaceRole>(role));
      }
    }
    return bits;
  });
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
