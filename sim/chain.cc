// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "chain.h"

#include "tap.h"

using sim::Cells;
using sim::Device;

void sim_chain::PowerCycle() {
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
  const sim_state next = sim::NextState(state, tms);
  reset_due |= next == SIM_TEST_LOGIC_RESET && state != SIM_TEST_LOGIC_RESET;
  state = next;
}

void sim_chain::Fall() {
  if (state == SIM_UPDATE_DR) {
    UpdateDr();
  } else if (state == SIM_UPDATE_IR) {
    UpdateIr();
  } else if (reset_due) {
    Reset();
  }
  tdo = !sim::IsShift(state) || shift.length == 0 || (shift.Get(0) != FlipNow());
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

// The device nearest TDO has the first cells. A device that is missing has none, and keeps none
// until the next Capture: the layout of a scan does not change under way.
void sim_chain::LayOut(bool ir) {
  shift.length = 0;
  shift.head = 0;
  for (sim_u32 i = device_count; i-- > 0;) {
    Device &device = devices[i];
    const sim_u64 bits = ir ? sim::kInstructionBits : device.RegisterBits();
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
