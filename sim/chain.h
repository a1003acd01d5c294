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

// What the TDO line shows.
enum class TdoLine : sim_u8 { kDriven, kStuckAt0, kStuckAt1, kBridged };

}  // namespace sim

struct sim_chain {
  sim::Device *devices;  // devices[0] is device 1
  sim_u32 device_count;
  sim::ShiftRegister shift;
  sim::Log log;
  sim::Fault faults[SIM_FAULT_KIND_COUNT];
  sim_counters counters;
  sim_u64 idle_clocks;  // clocks that stayed in Run-Test/Idle, since the chain was made
  sim_u64 dr_captures;  // passages through Capture-DR, since the chain was made
  sim_u64 rises;        // rising edges of TCK, since the chain was made
  sim_u64 lost_at;      // the one that finds the chain without power; 0: none
  sim_u64 shifted;      // bits of the scan under way before the shift register's window
  sim_state state;
  sim_u32 inverted;  // the bits of the window that leave the wrong way
  bool shifts_dr;    // the scan under way is of the data registers
  bool reset_due;    // Test-Logic-Reset was entered and TCK has not fallen since
  bool unpowered;    // by a fault
  bool tck;
  bool tms;
  bool tdi;
  bool tdo;  // what the chain drives, before the faults of the line
  sim::TdoLine tdo_line;

  // The device of a number from 1, or null.
  sim::Device *DeviceAt(sim_u32 number) const {
    return number - 1 < device_count ? devices + (number - 1) : nullptr;
  }

  // Also ends a power loss.
  void PowerCycle();
  void Write(sim_line line, bool high) {
    if (line == SIM_TCK && high && !tck) {
      tck = true;
      Rise();
    } else if (!WriteLevel(line, high)) {
      tck = false;
      Fall();
    }
  }

  // See sim_chain_write_level().
  bool WriteLevel(sim_line line, bool high) {
    if (line == SIM_TCK) {
      return high ? tck : !tck || FallsInShift();
    }
    if (line == SIM_TMS && high != tms) {
      tms = high;
      ++counters.tms_changes;
    } else if (line == SIM_TDI && high != tdi) {
      tdi = high;
      ++counters.tdi_changes;
    }
    return true;
  }

  // Lets every operation that has had its clocks take effect.
  void Settle();

  // Tells the devices of faults that have been set or cleared.
  void ApplyFaults();

  sim_u64 DroppedScans() const {
    return log.dropped + (log.HasRoomFor(shifted + shift.at) ? 0 : 1);
  }

  // The level of the TDO line.
  bool TdoLevel() const {
    return tdo_line == sim::TdoLine::kDriven ? tdo : FaultyTdoLevel();
  }

 private:
  bool FaultyTdoLevel() const;
  bool IsInShift() const {
    return state == SIM_SHIFT_DR || state == SIM_SHIFT_IR;
  }

  // The edges of TCK. The states where a chain spends its time come first.
  void Rise() {
    if (unpowered) {
      return;
    }
    if (++rises == lost_at) {
      LosePower();
      return;
    }
    ++counters.clocks[state];
    if (IsInShift()) {
      if (shift.Clock(tdi)) {
        EndWindow();
      }
      if (!tms) {
        return;
      }
    } else if (state == SIM_RUN_TEST_IDLE) {
      Idle();
    } else {
      Capture();
    }
    Step();
  }
  void Fall() {
    if (!unpowered) {
      Update();
      tdo = true;
    }
  }

  // TCK falls, if it does so in a Shift state.
  bool FallsInShift() {
    if (!IsInShift()) {
      return false;
    }
    tck = false;
    tdo = shift.First();
    return true;
  }

  void Idle();
  void Capture();
  void Update();
  void Step();
  void EndWindow();
  sim_u32 LoggedTdo() const;
  sim_u32 InvertedBits() const;
  void LayOut(bool ir);
  void BeginScan(bool dr);
  void CaptureIr();
  void CaptureDr();
  void UpdateIr();
  void UpdateDr();
  void Reset();
  sim::TdoLine FindTdoLine() const;
  void SetTdoLine(sim::TdoLine line);
  void Invert(sim_u32 bits);
  void Load();
  void LosePower();
};

#endif
