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

}  // namespace

void sim_chain::PowerCycle() {
  unpowered = false;
  faults[SIM_FAULT_POWER_LOST].set = false;
  lost_at = 0;
  state = SIM_TEST_LOGIC_RESET;
  reset_due = false;
  tdo = true;
  shift.Clear();
  log.Cut();
  for (sim_u32 i = 0; i < device_count; ++i) {
    devices[i].PowerCycle(idle_clocks);
  }
}

void sim_chain::Step() {
  const sim_state next = kStates[state].next[tms];
  reset_due |= next == SIM_TEST_LOGIC_RESET && state != SIM_TEST_LOGIC_RESET;
  state = next;
}

void sim_chain::Idle() {
  if (!tms) {
    ++idle_clocks;
    log.Idle();
  }
}

void sim_chain::Capture() {
  if (state == SIM_CAPTURE_DR) {
    CaptureDr();
  } else if (state == SIM_CAPTURE_IR) {
    CaptureIr();
  }
}

void sim_chain::Update() {
  if (state == SIM_UPDATE_DR) {
    UpdateDr();
  } else if (state == SIM_UPDATE_IR) {
    UpdateIr();
  } else if (reset_due) {
    Reset();
  }
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
  const sim::Fault &lost = faults[SIM_FAULT_POWER_LOST];
  lost_at = lost.set ? lost.since + lost.first : 0;
  Invert(InvertedBits());
  SetTdoLine(FindTdoLine());
  if (unpowered && !lost.set) {
    PowerCycle();
  }
}

// A chain without a fitted device is a wire.
sim::TdoLine sim_chain::FindTdoLine() const {
  if (faults[SIM_FAULT_TDO_STUCK_0].set) {
    return sim::TdoLine::kStuckAt0;
  }
  if (faults[SIM_FAULT_TDO_STUCK_1].set) {
    return sim::TdoLine::kStuckAt1;
  }
  const sim_u32 missing = faults[SIM_FAULT_MISSING].set ? 1 : 0;
  return device_count == missing ? sim::TdoLine::kBridged : sim::TdoLine::kDriven;
}

// The log has the levels of the line as it was. What the chain drives stays until TCK falls.
void sim_chain::SetTdoLine(sim::TdoLine line) {
  if (line == tdo_line) {
    return;
  }
  EndWindow();
  tdo_line = line;
  if (IsInShift() && !tck) {
    shift.SetFirst(tdo);
  }
}

void sim_chain::Invert(sim_u32 bits) {
  const unsigned passed = shift.at + (IsInShift() && !tck ? 1 : 0);
  shift.out ^= (bits ^ inverted) & (~static_cast<sim_u64>(0) << passed);
  inverted = bits;
}

bool sim_chain::FaultyTdoLevel() const {
  return tdo_line == sim::TdoLine::kBridged ? tdi : tdo_line == sim::TdoLine::kStuckAt1;
}

// The window's bits go to the log and to the cells, and another window begins.
void sim_chain::EndWindow() {
  log.Add(shifted, shift.at, shift.in, LoggedTdo());
  shifted += shift.at;
  shift.Keep();
  Load();
}

// What was on the line at the window's rising edges.
sim_u32 sim_chain::LoggedTdo() const {
  switch (tdo_line) {
    case sim::TdoLine::kDriven:
      return static_cast<sim_u32>(shift.out);
    case sim::TdoLine::kBridged:
      return shift.in;
    default:
      return tdo_line == sim::TdoLine::kStuckAt1 ? ~0u : 0;
  }
}

// Of the window that begins.
sim_u32 sim_chain::InvertedBits() const {
  const sim::Fault &flip = faults[SIM_FAULT_FLIP];
  const bool now = flip.set && shifts_dr && dr_captures - flip.since == flip.first;
  return now && flip.second - shifted < sim::ShiftRegister::kWindow ? 1u << (flip.second - shifted)
                                                                    : 0;
}

// The device nearest TDO has the first cells. A missing device has none until the next Capture: the
// layout of a scan does not change under way.
void sim_chain::LayOut(bool ir) {
  shift.Clear();
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
  BeginScan(false);
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
  ++dr_captures;
  BeginScan(true);
  ++counters.dr_scans;
  log.Begin(SIM_SCAN_DR);
}

void sim_chain::BeginScan(bool dr) {
  shifted = 0;
  shifts_dr = dr;
  Load();
}

void sim_chain::Load() {
  inverted = InvertedBits();
  shift.Load(inverted);
}

void sim_chain::UpdateIr() {
  EndWindow();
  for (Device *device = devices; device != devices + device_count; ++device) {
    if (device->cells.count != 0) {
      device->UpdateIr(idle_clocks);
    }
  }
  log.End(shifted);
}

void sim_chain::UpdateDr() {
  EndWindow();
  for (Device *device = devices; device != devices + device_count; ++device) {
    if (device->cells.count != 0) {
      device->UpdateDr(idle_clocks);
    }
  }
  log.End(shifted);
}

void sim_chain::Reset() {
  reset_due = false;
  for (sim_u32 i = 0; i < device_count; ++i) {
    devices[i].Reset(idle_clocks);
  }
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
  chain->Write(line, level != 0);
}

int sim_chain_write_level(struct sim_chain *chain, enum sim_line line, int level) {
  return chain->WriteLevel(line, level != 0);
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
  return chain->DroppedScans();
}

void sim_chain_clear_log(struct sim_chain *chain) {
  chain->log.Clear();
}
}
