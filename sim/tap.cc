// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tap.h"

namespace {

struct Row {
  const char *name;
  sim_state next[2];  // by the level of TMS
};

constexpr Row kStates[SIM_STATE_COUNT] = {
    {"Test-Logic-Reset", {SIM_RUN_TEST_IDLE, SIM_TEST_LOGIC_RESET}},
    {"Run-Test/Idle", {SIM_RUN_TEST_IDLE, SIM_SELECT_DR_SCAN}},
    {"Select-DR-Scan", {SIM_CAPTURE_DR, SIM_SELECT_IR_SCAN}},
    {"Capture-DR", {SIM_SHIFT_DR, SIM_EXIT1_DR}},
    {"Shift-DR", {SIM_SHIFT_DR, SIM_EXIT1_DR}},
    {"Exit1-DR", {SIM_PAUSE_DR, SIM_UPDATE_DR}},
    {"Pause-DR", {SIM_PAUSE_DR, SIM_EXIT2_DR}},
    {"Exit2-DR", {SIM_SHIFT_DR, SIM_UPDATE_DR}},
    {"Update-DR", {SIM_RUN_TEST_IDLE, SIM_SELECT_DR_SCAN}},
    {"Select-IR-Scan", {SIM_CAPTURE_IR, SIM_TEST_LOGIC_RESET}},
    {"Capture-IR", {SIM_SHIFT_IR, SIM_EXIT1_IR}},
    {"Shift-IR", {SIM_SHIFT_IR, SIM_EXIT1_IR}},
    {"Exit1-IR", {SIM_PAUSE_IR, SIM_UPDATE_IR}},
    {"Pause-IR", {SIM_PAUSE_IR, SIM_EXIT2_IR}},
    {"Exit2-IR", {SIM_SHIFT_IR, SIM_UPDATE_IR}},
    {"Update-IR", {SIM_RUN_TEST_IDLE, SIM_SELECT_DR_SCAN}},
};

}  // namespace

namespace sim {

sim_state NextState(sim_state state, bool tms) {
  return kStates[state].next[tms];
}

}  // namespace sim

extern "C" const char *sim_state_name(enum sim_state state) {
  return static_cast<unsigned>(state) < SIM_STATE_COUNT ? kStates[state].name : "?";
}
