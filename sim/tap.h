// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The TAP controller's sixteen states.
#ifndef SIM_TAP_H
#define SIM_TAP_H

#include "sim.h"

namespace sim {

// The state after a rising edge of TCK in `state` with TMS at the given level.
sim_state NextState(sim_state state, bool tms);

constexpr bool IsShift(sim_state state) {
  return state == SIM_SHIFT_DR || state == SIM_SHIFT_IR;
}

}  // namespace sim

#endif
