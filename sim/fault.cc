// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The C interface: setting, clearing and asking for faults.
#include "chain.h"

namespace {

// Where a device has no dead row.
sim_u32 NoRow(const sim::Device &device) {
  return device.config.rows;
}

bool SetFlip(sim_chain &chain, sim_u32 scan, sim_u32 bit) {
  if (scan == 0) {
    return false;
  }
  chain.faults.flip = true;
  chain.faults.flip_scan = scan;
  chain.faults.flip_bit = bit;
  chain.faults.scans = 0;
  return true;
}

void ClearDeadRow(sim_chain &chain) {
  for (sim_u32 i = 0; i < chain.device_count; ++i) {
    chain.devices[i].part.dead_row = NoRow(chain.devices[i]);
  }
}

bool SetDeadRow(sim_chain &chain, sim_u32 number, sim_u32 row) {
  sim::Device *device = chain.DeviceAt(number);
  if (device == nullptr || row >= device->config.rows) {
    return false;
  }
  ClearDeadRow(chain);
  device->part.dead_row = row;
  return true;
}

void ClearMissing(sim_chain &chain) {
  for (sim_u32 i = 0; i < chain.device_count; ++i) {
    chain.devices[i].missing = false;
  }
  chain.fitted = chain.device_count;
}

bool SetMissing(sim_chain &chain, sim_u32 number) {
  sim::Device *device = chain.DeviceAt(number);
  if (device == nullptr) {
    return false;
  }
  ClearMissing(chain);
  device->missing = true;
  --chain.fitted;
  return true;
}

bool Set(sim_chain &chain, const sim_fault &fault) {
  switch (fault.kind) {
    case SIM_FAULT_TDO_STUCK_0:
    case SIM_FAULT_TDO_STUCK_1:
      chain.faults.stuck = true;
      chain.faults.stuck_level = fault.kind == SIM_FAULT_TDO_STUCK_1;
      return true;
    case SIM_FAULT_FLIP:
      return SetFlip(chain, fault.first, fault.second);
    case SIM_FAULT_DEAD_ROW:
      return SetDeadRow(chain, fault.first, fault.second);
    case SIM_FAULT_MISSING:
      return SetMissing(chain, fault.first);
    default:
      return false;
  }
}

bool FindDeadRow(const sim_chain &chain, sim_fault &fault) {
  for (sim_u32 i = 0; i < chain.device_count; ++i) {
    const sim::Device &device = chain.devices[i];
    if (device.part.dead_row != NoRow(device)) {
      fault = sim_fault{SIM_FAULT_DEAD_ROW, i + 1, device.part.dead_row};
      return true;
    }
  }
  return false;
}

bool FindMissing(const sim_chain &chain, sim_fault &fault) {
  for (sim_u32 i = 0; i < chain.device_count; ++i) {
    if (chain.devices[i].missing) {
      fault = sim_fault{SIM_FAULT_MISSING, i + 1, 0};
      return true;
    }
  }
  return false;
}

bool Find(const sim_chain &chain, sim_fault_kind kind, sim_fault &fault) {
  const sim::Faults &faults = chain.faults;
  switch (kind) {
    case SIM_FAULT_TDO_STUCK_0:
    case SIM_FAULT_TDO_STUCK_1:
      fault = sim_fault{kind, 0, 0};
      return faults.stuck && faults.stuck_level == (kind == SIM_FAULT_TDO_STUCK_1);
    case SIM_FAULT_FLIP:
      fault = sim_fault{kind, faults.flip_scan, faults.flip_bit};
      return faults.flip;
    case SIM_FAULT_DEAD_ROW:
      return FindDeadRow(chain, fault);
    case SIM_FAULT_MISSING:
      return FindMissing(chain, fault);
    default:
      return false;
  }
}

}  // namespace

extern "C" {

int sim_chain_set_fault(struct sim_chain *chain, const struct sim_fault *fault) {
  chain->Settle();
  return Set(*chain, *fault) ? 0 : -1;
}

void sim_chain_clear_faults(struct sim_chain *chain) {
  chain->Settle();
  chain->faults = {};
  ClearDeadRow(*chain);
  ClearMissing(*chain);
}

int sim_chain_fault(const struct sim_chain *chain, enum sim_fault_kind kind,
                    struct sim_fault *fault) {
  sim_fault found = {};
  if (!Find(*chain, kind, found)) {
    return 0;
  }
  *fault = found;
  return 1;
}
}
