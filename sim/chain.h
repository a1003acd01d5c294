// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The chain: pins and TAP state, and the devices between TDI and TDO.
#ifndef SIM_CHAIN_H
#define SIM_CHAIN_H

#include "device.h"
#include "log.h"

namespace sim {

// A fault of one kind.
struct Fault {
  bool set;
  sim_u32 first;  // its numbers, see sim_fault_forms
  sim_u32 second;
  sim_u64 since;  // what dr_captures, or for a lost power rises, was when it was set
};

}  // namespace sim

struct sim_chain {
  sim::Device *devices;  // devices[0] is device 1
  sim_u32 device_count;
  sim_u32 fitted;  // devices that are not missing
  sim::ShiftRegister shift;
  sim::Log log;
  sim::Fault faults[SIM_FAULT_KIND_COUNT];
  sim_counters counters;
  sim_u64 idle_clocks;  // clocks that stayed in Run-Test/Idle, since the chain was made
  sim_u64 dr_captures;  // passages through Capture-DR, since the chain was made
  sim_u64 rises;        // rising edges of TCK, since the chain was made
  sim_u64 shifted;      // bits of the scan under way
  sim_state state;
  bool reset_due;  // Test-Logic-Reset was entered and TCK has not fallen since
  bool unpowered;  // by a fault
  bool tck;
  bool tms;
  bool tdi;
  bool tdo;  // what the chain drives, before the faults of the line

  // The device of a number from 1, or null.
  sim::Device *DeviceAt(sim_u32 number) const {
    return number - 1 < device_count ? devices + (number - 1) : nullptr;
  }

  // Also ends a power loss.
  void PowerCycle();
  void Rise();
  void Fall();

  // Lets every operation that has had its clocks take effect.
  void Settle();

  // Tells the devices of faults that have been set or cleared.
  void ApplyFaults();

  // The level of the TDO line.
  bool TdoLevel() const;

 private:
  void Shift();
  void LayOut(bool ir);
  void CaptureIr();
  void CaptureDr();
  void UpdateIr();
  void UpdateDr();
  void Reset();
  bool FlipNow() const;
  bool LosesPowerNow() const;
  void LosePower();
};

#endif
