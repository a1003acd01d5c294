// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The C interface: pins, state, counters and log.
#include "chain.h"

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

sim_u32 sim_chain_device_count(const struct sim_chain *chain) {
  return chain->device_count;
}

const struct sim_device_config *sim_chain_device(const struct sim_chain *chain, sim_u32 device) {
  const sim::Device *found = chain->DeviceAt(device);
  return found == nullptr ? nullptr : &found->config;
}

sim_u8 sim_chain_instruction(const struct sim_chain *chain, sim_u32 device) {
  const sim::Device *found = chain->DeviceAt(device);
  return found == nullptr ? static_cast<sim_u8>(SIM_BYPASS) : found->instruction;
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
