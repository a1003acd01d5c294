// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Making a chain in the caller's memory. One walk places every piece; without memory it only adds
// up the sizes.
#include "chain.h"
#include "config.h"

namespace {

constexpr sim_u64 kMaxBytes = 1ull << 30;

class Layout {
 public:
  explicit Layout(void *memory) : memory_(static_cast<sim_u8 *>(memory)) {}

  // Room for `count` objects, aligned to 8; null while only measuring.
  template <typename T>
  T *Take(sim_u64 count) {
    sim_u8 *place = memory_ == nullptr ? nullptr : memory_ + used_;
    if (count > kMaxBytes / sizeof(T) || used_ > kMaxBytes) {
      used_ = kMaxBytes + 1;
      return nullptr;
    }
    used_ += (count * sizeof(T) + 7) & ~static_cast<sim_u64>(7);
    return reinterpret_cast<T *>(place);
  }

  // Bytes taken so far; 0 if they are too many.
  sim_size used() const {
    return used_ > kMaxBytes ? 0 : used_;
  }

 private:
  sim_u8 *memory_;
  sim_u64 used_ = 0;
};

// What is left out has its usual value.
sim_device_config Complete(sim_device_config device) {
  if (device.idcode_instruction == 0) {
    device.idcode_instruction = SIM_IDCODE_6;
  }
  if (device.ir_bits == 0) {
    device.ir_bits = sim_fields[SIM_FIELD_IR].absent;
  }
  return device;
}

bool Possible(const sim_device_config &device) {
  return sim_field_allows(&sim_fields[SIM_FIELD_IR], device.ir_bits) &&
         sim_instruction_fits(&device) && sim_bypass_fits(&device) &&
         (device.rows == 0 || sim_field_allows(&sim_fields[SIM_FIELD_BITS], device.row_bits)) &&
         sim_part_fits(&device);
}

bool Possible(const sim_config &config) {
  for (sim_u32 i = 0; i < config.device_count; ++i) {
    if (!Possible(Complete(config.devices[i]))) {
      return false;
    }
  }
  return true;
}

void PlacePart(Layout &layout, sim::Device *device, const sim_device_config &config) {
  if (config.rows == 0) {
    return;
  }
  const sim_u64 row_bytes = sim::BytesFor(config.row_bits);
  sim_u8 *memory = layout.Take<sim_u8>(config.rows * row_bytes);
  sim_u8 *latch = layout.Take<sim_u8>(row_bytes);
  if (device != nullptr) {
    device->part.memory = memory;
    device->part.latch = latch;
  }
}

// The chain with all its pieces placed and nothing filled in, or null while only measuring.
sim_chain *Place(Layout &layout, const sim_config &config) {
  sim_chain *chain = layout.Take<sim_chain>(1);
  sim::Device *devices = layout.Take<sim::Device>(config.device_count);
  sim_u64 cells = 0;
  for (sim_u32 i = 0; i < config.device_count; ++i) {
    cells += sim::Device::LongestRegister(config.devices[i]);
    PlacePart(layout, devices == nullptr ? nullptr : devices + i, config.devices[i]);
  }
  sim_u8 *bytes = layout.Take<sim_u8>(sim::BytesFor(cells));
  const sim_u64 log_bytes = config.log_bytes & ~static_cast<sim_size>(7);
  sim_u8 *log = layout.Take<sim_u8>(log_bytes);
  if (chain != nullptr) {
    chain->devices = devices;
    chain->shift.bytes = bytes;
    chain->log.memory = log;
    chain->log.capacity = log_bytes;
  }
  return chain;
}

void Fill(sim::Device &device, const sim_device_config &config) {
  device.config = Complete(config);
  device.part.config = &device.config;
  if (device.part.exists()) {
    device.part.Create();
  }
}

}  // namespace

extern "C" {

sim_size sim_chain_size(const struct sim_config *config) {
  if (!Possible(*config)) {
    return 0;
  }
  Layout layout(nullptr);
  Place(layout, *config);
  return layout.used();
}

struct sim_chain *sim_chain_create(void *memory, const struct sim_config *config) {
  const sim_size size = sim_chain_size(config);
  if (memory == nullptr || size == 0) {
    return nullptr;
  }
  __builtin_memset(memory, 0, size);
  Layout layout(memory);
  sim_chain *chain = Place(layout, *config);
  chain->device_count = config->device_count;
  for (sim_u32 i = 0; i < config->device_count; ++i) {
    Fill(chain->devices[i], config->devices[i]);
  }
  chain->log.Clear();
  chain->tms = true;
  chain->tdi = true;
  chain->ApplyFaults();
  chain->PowerCycle();
  return chain;
}
}
