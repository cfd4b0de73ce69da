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
  const int bound = m_roles.GetBound();
  m_pieceRoles.assign(static_cast<size_t>(bound) / 2 + 1, 0);
  for (int handle = 0; handle < bound; ++handle) {
    int n = 0;
    const POS_info* roles = m_roles.GetPOS(handle, &n);
    unsigned bits = 0;
    for (int k = 0; k < n; ++k) {
      const unsigned char role = roles[k].POS_id;
      if (role >= kPlaceRoleFirst && role <= kPlaceRoleLast) {
        bits |= PieceBit(static_cast<PlaceRole>(role));
      }
    }
    m_pieceRoles[static_cast<size_t>(handle) / 2] |=
        static_cast<unsigned char>(bits << (handle % 2 * 4));
  }
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
