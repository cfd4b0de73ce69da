#include "Tagger/RoleGate.h"

#include <vector>

#include "Utility/FSA.h"
#include "Utility/POS.h"

CRoleGate::CRoleGate(const CPOS& roles, std::initializer_list<unsigned char> defaultRoles,
                     const CFSA& automaton) {
  // The bits of each role alone: whether it leaves the start state, and
  // whether it leaves some state one step from the start.
  std::vector<int> firstSteps;
  for (int role = 0; role < kRoles; ++role) {
    const int state = automaton.NextState(0, role);
    if (state != -1) firstSteps.push_back(state);
  }
  for (int role = 0; role < kRoles; ++role) {
    unsigned bits = automaton.NextState(0, role) != -1 ? kBegins : 0;
    for (const int state : firstSteps) {
      if (automaton.NextState(state, role) != -1) bits |= kContinues;
    }
    m_roleBits[role] = static_cast<unsigned char>(bits);
  }
  unsigned absent = 0;
  for (const unsigned char role : defaultRoles) absent |= m_roleBits[role];
  m_bits.Build(roles, absent, [this](const POS_info* records, int n) {
    unsigned bits = 0;
    for (int k = 0; k < n; ++k) bits |= m_roleBits[records[k].POS_id];
    return bits;
  });
}

bool CRoleGate::MayMerge(const word_t* words, int count, int nameHandle) const {
  bool begins = false;  // whether the word before can begin a run
  for (int i = 0; i < count; ++i) {
    if (nameHandle >= 0 && words[i].handle == nameHandle) return true;
    const unsigned bits = m_bits.Get(words[i].handle);
    if (begins && (bits & kContinues) != 0) return true;
    begins = (bits & kBegins) != 0;
  }
  return false;
}
