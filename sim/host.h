// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A chain that owns its memory, for host programs. Bit strings here hold '0' and '1', the bit that
// is shifted first (bit 0) as the first character.
#ifndef SIM_HOST_H
#define SIM_HOST_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "config.h"
#include "sim.h"

namespace sim {

// One scan of the log.
struct Scan {
  sim_scan_kind kind;
  uint32_t number;  // from 1 since the log was cleared
  std::string tdi;
  std::string tdo;
  uint64_t idle_clocks;  // spent in Run-Test/Idle after it
};

class Chain {
 public:
  // Makes a chain from its text (see config.h) with so many bytes for the log. Throws
  // std::invalid_argument that names the place of an error.
  explicit Chain(const std::string &text, size_t log_bytes = 1 << 20)
      : Chain(ParseDevices(text), log_bytes) {}

  explicit Chain(const std::vector<sim_device_config> &devices, size_t log_bytes = 1 << 20) {
    const sim_config config = {devices.data(), static_cast<sim_u32>(devices.size()), log_bytes};
    const size_t size = sim_chain_size(&config);
    if (size == 0) {
      throw std::invalid_argument("the chain is impossible");
    }
    memory_ = std::make_unique<uint64_t[]>((size + 7) / 8);
    chain_ = sim_chain_create(memory_.get(), &config);
  }

  // The chain for the C interface; it lives as long as this object.
  sim_chain *get() {
    return chain_;
  }
  const sim_chain *get() const {
    return chain_;
  }

  void Write(sim_line line, bool level) {
    sim_chain_write(chain_, line, level);
  }
  bool Tdo() const {
    return sim_chain_read(chain_, SIM_TDO) != 0;
  }

  sim_state state() const {
    return sim_chain_state(chain_);
  }
  uint32_t instruction(uint32_t device) const {
    return sim_chain_instruction(chain_, device);
  }
  uint8_t status(uint32_t device) {
    return sim_chain_status(chain_, device);
  }
  const sim_counters &counters() const {
    return *sim_chain_counters(chain_);
  }

  // A row (from 0) of a device (from 1) as a bit string, or the other way round. Throws
  // std::out_of_range where there is no such row or the string's length is not the row's.
  std::string Row(uint32_t device, uint32_t row) {
    const uint8_t *bytes = RowMemory(device, row);
    std::string bits(sim_chain_device(chain_, device)->row_bits, '0');
    for (size_t bit = 0; bit < bits.size(); ++bit) {
      bits[bit] = bytes[bit / 8] >> (bit % 8) & 1 ? '1' : '0';
    }
    return bits;
  }
  void SetRow(uint32_t device, uint32_t row, const std::string &bits) {
    uint8_t *bytes = RowMemory(device, row);
    if (bits.size() != sim_chain_device(chain_, device)->row_bits) {
      throw std::out_of_range("not the length of a row");
    }
    for (size_t bit = 0; bit < bits.size(); ++bit) {
      const unsigned mask = 1u << (bit % 8);
      bytes[bit / 8] =
          static_cast<uint8_t>(bits[bit] == '1' ? bytes[bit / 8] | mask : bytes[bit / 8] & ~mask);
    }
  }

  // Sets the faults of a text (see config.h) beside those that are set. Throws
  // std::invalid_argument if the text is wrong or names what the chain does not have.
  void SetFaults(const std::string &text) {
    sim_u32 count = 0;
    sim_text_error error = {};
    std::vector<sim_fault> faults(text.size() + 1);
    if (sim_faults_parse(text.c_str(), faults.data(), static_cast<sim_u32>(faults.size()), &count,
                         &error) != 0) {
      throw Wrong(text, error);
    }
    for (sim_u32 i = 0; i < count; ++i) {
      if (sim_chain_set_fault(chain_, &faults[i]) != 0) {
        throw std::invalid_argument("the chain cannot have the fault: " + text);
      }
    }
  }
  void ClearFaults() {
    sim_chain_clear_faults(chain_);
  }

  // The log, oldest first; how many did not fit; and emptying it.
  std::vector<Scan> Scans() const {
    std::vector<Scan> scans;
    for (const sim_scan *scan = sim_chain_first_scan(chain_); scan != nullptr;
         scan = sim_chain_next_scan(chain_, scan)) {
      scans.push_back(Copy(*scan));
    }
    return scans;
  }
  uint64_t DroppedScans() const {
    return sim_chain_dropped_scans(chain_);
  }
  void ClearLog() {
    sim_chain_clear_log(chain_);
  }

 private:
  static std::invalid_argument Wrong(const std::string &text, const sim_text_error &error) {
    return std::invalid_argument(text + ": at " + std::to_string(error.position) + ": " +
                                 error.reason);
  }

  static std::vector<sim_device_config> ParseDevices(const std::string &text) {
    sim_u32 count = 0;
    sim_text_error error = {};
    if (sim_config_parse(text.c_str(), nullptr, 0, &count, &error) != 0) {
      throw Wrong(text, error);
    }
    std::vector<sim_device_config> devices(count);
    sim_config_parse(text.c_str(), devices.data(), count, &count, &error);
    return devices;
  }

  static Scan Copy(const sim_scan &scan) {
    Scan copy = {static_cast<sim_scan_kind>(scan.kind), scan.number, {}, {}, scan.idle_clocks};
    copy.tdi.reserve(scan.bits);
    copy.tdo.reserve(scan.bits);
    for (uint32_t bit = 0; bit < scan.bits; ++bit) {
      copy.tdi.push_back(static_cast<char>('0' + sim_scan_tdi(&scan, bit)));
      copy.tdo.push_back(static_cast<char>('0' + sim_scan_tdo(&scan, bit)));
    }
    return copy;
  }

  uint8_t *RowMemory(uint32_t device, uint32_t row) {
    uint8_t *bytes = sim_chain_row(chain_, device, row);
    if (bytes == nullptr) {
      throw std::out_of_range("no such row");
    }
    return bytes;
  }

  std::unique_ptr<uint64_t[]> memory_;
  sim_chain *chain_;
};

}  // namespace sim

#endif
