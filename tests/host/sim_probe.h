// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the tests of the simulated chain drive it with: clocks and scans made from pin levels alone.
// Bit strings hold the bit that is shifted first as the first character.
#ifndef TESTS_HOST_SIM_PROBE_H
#define TESTS_HOST_SIM_PROBE_H

#include <cstdint>
#include <string>

#include "sim/host.h"

namespace sim_test {

// The low `bits` bits of a number, bit 0 first.
inline std::string Bits(uint64_t value, unsigned bits) {
  std::string text;
  for (unsigned bit = 0; bit < bits; ++bit) {
    text.push_back(value >> bit & 1 ? '1' : '0');
  }
  return text;
}

inline std::string Repeat(const std::string &text, unsigned times) {
  std::string all;
  for (unsigned i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

class Probe {
 public:
  explicit Probe(sim::Chain &chain) : chain_(chain) {}

  // One period that begins and ends with TCK low. Returns TDO as it stood before the rising edge.
  char Clock(bool tms, bool tdi = false) {
    chain_.Write(SIM_TMS, tms);
    chain_.Write(SIM_TDI, tdi);
    const char tdo = chain_.Tdo() ? '1' : '0';
    chain_.Write(SIM_TCK, true);
    chain_.Write(SIM_TCK, false);
    return tdo;
  }

  // A period for each character, which is the level of TMS.
  void Walk(const std::string &tms) {
    for (const char level : tms) {
      Clock(level == '1');
    }
  }

  // From any state through Test-Logic-Reset to Run-Test/Idle.
  void Reset() {
    Walk("111110");
  }

  // From Run-Test/Idle and back, shifting as many bits as tdi has. Return what came out of TDO.
  std::string ScanIr(const std::string &tdi) {
    Walk("1100");
    return Finish(tdi);
  }
  std::string ScanDr(const std::string &tdi) {
    Walk("100");
    return Finish(tdi);
  }

  // Periods with TMS low in Run-Test/Idle.
  void Idle(unsigned clocks) {
    for (unsigned i = 0; i < clocks; ++i) {
      Clock(false);
    }
  }

  // For a chain of one device.
  std::string Instruct(uint8_t instruction) {
    return ScanIr(Bits(instruction, 8));
  }

 private:
  std::string Finish(const std::string &tdi) {
    std::string tdo;
    for (size_t bit = 0; bit < tdi.size(); ++bit) {
      tdo.push_back(Clock(bit + 1 == tdi.size(), tdi[bit] == '1'));
    }
    Walk("10");
    return tdo;
  }

  sim::Chain &chain_;
};

}  // namespace sim_test

#endif
