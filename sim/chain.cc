// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The chain at work, and the C interface to its pins, state, counters and log.
#include "chain.h"

using sim::Cells;
using sim::Device;

namespace {

// The TAP controller by the standard. A state's successors are those of a rising edge of TCK.
struct TapState {
  const char *name;
  sim_state next[2];  // by the level of TMS
};

constexpr TapState kStates[SIM_STATE_COUNT] = {
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

bool IsShift(sim_state state) {
  return state == SIM_SHIFT_DR || state == SIM_SHIFT_IR;
}

}  // namespace

void sim_chain::PowerCycle() {
  unpowered = false;
  faults[SIM_FAULT_POWER_LOST].set = false;
  state = SIM_TEST_LOGIC_RESET;
  reset_due = false;
  tdo = true;
  shift.length = 0;
  log.Cut();
  for (sim_u32 i = 0; i < device_count; ++i) {
    devices[i].PowerCycle(idle_clocks);
  }
}

void sim_chain::Rise() {
  if (unpowered) {
    return;
  }
  ++rises;
  if (LosesPowerNow()) {
    LosePower();
    return;
  }
  ++counters.clocks[state];
  switch (state) {
    case SIM_SHIFT_DR:
    case SIM_SHIFT_IR:
      Shift();
      break;
    case SIM_CAPTURE_DR:
      CaptureDr();
      break;
    case SIM_CAPTURE_IR:
      CaptureIr();
      break;
    case SIM_RUN_TEST_IDLE:
      if (!tms) {
        ++idle_clocks;
        log.Idle();
      }
      break;
    default:
      break;
  }
  const sim_state next = kStates[state].next[tms];
  reset_due |= next == SIM_TEST_LOGIC_RESET && state != SIM_TEST_LOGIC_RESET;
  state = next;
}

void sim_chain::Fall() {
  if (unpowered) {
    return;
  }
  if (state == SIM_UPDATE_DR) {
    UpdateDr();
  } else if (state == SIM_UPDATE_IR) {
    UpdateIr();
  } else if (reset_due) {
    Reset();
  }
  tdo = !IsShift(state) || shift.length == 0 || (shift.Get(0) != FlipNow());
}

void sim_chain::Settle() {
  for (sim_u32 i = 0; i < device_count; ++i) {
    if (devices[i].part.exists()) {
      devices[i].part.Settle(idle_clocks);
    }
  }
}

void sim_chain::ApplyFaults() {
  const sim::Fault &missing = faults[SIM_FAULT_MISSING];
  const sim::Fault &dead_row = faults[SIM_FAULT_DEAD_ROW];
  for (sim_u32 i = 0; i < device_count; ++i) {
    devices[i].missing = missing.set && missing.first == i + 1;
    devices[i].part.dead_row =
        dead_row.set && dead_row.first == i + 1 ? dead_row.second : devices[i].config.rows;
  }
  fitted = device_count - (missing.set ? 1 : 0);
  if (unpowered && !faults[SIM_FAULT_POWER_LOST].set) {
    PowerCycle();
  }
}

bool sim_chain::TdoLevel() const {
  if (faults[SIM_FAULT_TDO_STUCK_0].set || faults[SIM_FAULT_TDO_STUCK_1].set) {
    return faults[SIM_FAULT_TDO_STUCK_1].set;
  }
  return fitted == 0 ? tdi : tdo;
}

void sim_chain::Shift() {
  log.Bit(tdi, TdoLevel());
  shift.Clock(tdi);
  ++shifted;
}

// The device nearest TDO has the first cells. A missing device has none until the next Capture: the
// layout of a scan does not change under way.
void sim_chain::LayOut(bool ir) {
  shift.length = 0;
  shift.head = 0;
  for (sim_u32 i = device_count; i-- > 0;) {
    Device &device = devices[i];
    const sim_u64 bits = ir ? device.config.ir_bits : device.RegisterBits();
    device.cells = Cells{&shift, shift.length, device.missing ? 0 : bits};
    shift.length += device.cells.count;
  }
}

void sim_chain::CaptureIr() {
  LayOut(true);
  for (Device *device = devices; device != devices + device_count; ++device) {
    if (device->cells.count != 0) {
      device->CaptureIr(idle_clocks);
    }
  }
  shifted = 0;
  ++counters.ir_scans;
  log.Begin(SIM_SCAN_IR);
}

void sim_chain::CaptureDr() {
  LayOut(false);
  for (Device *device = devices; device != devices + device_count; ++device) {
    if (device->cells.count != 0) {
      device->CaptureDr(idle_clocks);
    }
  }
  shifted = 0;
  ++dr_captures;
  ++counters.dr_scans;
  log.Begin(SIM_SCAN_DR);
}

void sim_chain::UpdateIr() {
  for (Device *device = devices; device != devices + device_count; ++device) {
    if (device->cells.count != 0) {
      device->UpdateIr(idle_clocks);
    }
  }
  log.End();
}

void sim_chain::UpdateDr() {
  for (Device *device = devices; device != devices + device_count; ++device) {
    if (device->cells.count != 0) {
      device->UpdateDr(idle_clocks);
    }
  }
  log.End();
}

void sim_chain::Reset() {
  reset_due = false;
  for (sim_u32 i = 0; i < device_count; ++i) {
    devices[i].Reset(idle_clocks);
  }
}

bool sim_chain::FlipNow() const {
  const sim::Fault &flip = faults[SIM_FAULT_FLIP];
  return flip.set && state == SIM_SHIFT_DR && dr_captures - flip.since == flip.first &&
         shifted == flip.second;
}

bool sim_chain::LosesPowerNow() const {
  const sim::Fault &lost = faults[SIM_FAULT_POWER_LOST];
  return lost.set && rises - lost.since == lost.first;
}

void sim_chain::LosePower() {
  for (sim_u32 i = 0; i < device_count; ++i) {
    if (devices[i].part.exists()) {
      devices[i].part.LosePower(idle_clocks, rises);
    }
  }
  state = SIM_TEST_LOGIC_RESET;
  tdo = true;
  unpowered = true;
  log.Cut();
}

extern "C" {

void sim_chain_power_cycle(struct sim_chain *chain) {
  chain->PowerCycle();
}

void sim_chain_write(struct sim_chain *chain, enum sim_line line, int level) {
  const bool high = level != 0;
  if (line == SIM_TCK && high != chain->tck) {
    chain->tck = high;
    high ? chain->Rise() : chain->Fall();
  } else if (line == SIM_TMS && high != chain->tms) {
    chain->tms = high;
    ++chain->counters.tms_changes;
  } else if (line == SIM_TDI && high != chain->tdi) {
    chain->tdi = high;
    ++chain->counters.tdi_changes;
  }
}

int sim_chain_read(const struct sim_chain *chain, enum sim_line line) {
  switch (line) {
    case SIM_TCK:
      return chain->tck;
    case SIM_TMS:
      return chain->tms;
    case SIM_TDI:
      return chain->tdi;
    default:
      return chain->TdoLevel();
  }
}

enum sim_state sim_chain_state(const struct sim_chain *chain) {
  return chain->state;
}

const char *sim_state_name(enum sim_state state) {
  return static_cast<unsigned>(state) < SIM_STATE_COUNT ? kStates[state].name : "?";
}

sim_u32 sim_chain_device_count(const struct sim_chain *chain) {
  return chain->device_count;
}

const struct sim_device_config *sim_chain_device(const struct sim_chain *chain, sim_u32 device) {
  const sim::Device *found = chain->DeviceAt(device);
  return found == nullptr ? nullptr : &found->config;
}

sim_u32 sim_chain_instruction(const struct sim_chain *chain, sim_u32 device) {
  const sim::Device *found = chain->DeviceAt(device);
  return found == nullptr ? static_cast<sim_u32>(SIM_BYPASS) : found->instruction;
}

sim_u8 sim_chain_status(struct sim_chain *chain, sim_u32 device) {
  sim::Device *found = chain->DeviceAt(device);
  return found == nullptr || !found->part.exists() ? 0 : found->part.Status(chain->idle_clocks);
}

sim_u8 *sim_chain_row(struct sim_chain *chain, sim_u32 device, sim_u32 row) {
  sim::Device *found = chain->DeviceAt(device);
  return found == nullptr ? nullptr : found->part.Row(row, chain->idle_clocks);
}

const struct sim_counters *sim_chain_counters(const struct sim_chain *chain) {
  return &chain->counters;
}

void sim_chain_clear_counters(struct sim_chain *chain) {
  __builtin_memset(&chain->counters, 0, sizeof(chain->counters));
}

const struct sim_scan *sim_chain_first_scan(const struct sim_chain *chain) {
  return chain->log.First();
}

const struct sim_scan *sim_chain_next_scan(const struct sim_chain *chain,
                                           const struct sim_scan *scan) {
  return chain->log.Next(scan);
}

sim_u64 sim_chain_dropped_scans(const struct sim_chain *chain) {
  return chain->log.dropped;
}

void sim_chain_clear_log(struct sim_chain *chain) {
  chain->log.Clear();
}
}
