// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// How long a spoiled file could keep the player busy. Huge run-tests and loops are legal and merely
// long; a fuzz test passes over files that have them. The estimate takes every mark in the file for
// the start of a record, whether or not the player gets there.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

namespace fuzz {

using Bytes = std::vector<uint8_t>;

class Budget {
 public:
  explicit Budget(const Bytes &file) : file_(file) {
    frequencies_ = {1000000};
    ForEachRecord([this](uint8_t opcode, size_t at) {
      if (opcode == 7) {
        frequencies_.insert(Number(at));
      }
    });
    ForEachRecord([this](uint8_t opcode, size_t at) { Add(opcode, at); });
  }

  // At most so many clocks, waits and bits. Each LOOP is entered once at most, for there is one
  // counter and the way leads back only to behind the newest LOOP: repetitions add up.
  double cost() const {
    return once_ * (1 + repetitions_);
  }

 private:
  template <typename Visit>
  void ForEachRecord(Visit visit) const {
    for (size_t mark = 0; mark < file_.size(); ++mark) {
      if (file_[mark] == '^') {
        size_t at = mark + 1;
        Number(at);
        visit(Byte(at), at + 1);
      }
    }
  }

  void Add(uint8_t opcode, size_t at) {
    once_ += 1;
    if (opcode == '$') {
      const int32_t count = static_cast<int32_t>(Number(at));
      repetitions_ += count > 1 ? count : 0;
    } else if (opcode == 4) {
      AddRunTest(at + 1);
    } else if (opcode >= 9 && opcode <= 14) {
      const uint32_t bits = static_cast<uint32_t>(Number(at));
      once_ += bits < (4u << 23) ? bits : 0;  // what is longer cannot be allocated
    }
  }

  void AddRunTest(size_t at) {
    double worst = 0;
    for (const uint64_t frequency : frequencies_) {
      const uint32_t low = static_cast<uint32_t>(frequency);
      const int32_t cycles = static_cast<int32_t>(Cycles(at, frequency == 0 ? 1000000 : frequency));
      if (cycles > 0 && low != 0) {
        worst = std::max(worst, cycles + cycles * 1e4 / low);
      }
    }
    once_ += worst;
  }

  // The clocks of a body, in the player's arithmetic.
  uint64_t Cycles(size_t at, uint64_t frequency) const {
    uint64_t cycles = 0;
    for (;;) {
      const uint8_t field = Byte(at++);
      if (field == 24) {
        const uint64_t n = Number(at);
        cycles += n - 10 > 32768 ? frequency * (n - 32778) / 1000 : frequency * (n - 10) / 1000000;
      } else if (field == 20) {
        const uint64_t n = Number(at);
        cycles += (n > 32768 ? n - 32768 : n) - 10;
      } else if (field != 19) {
        return cycles;
      }
    }
  }

  uint8_t Byte(size_t at) const {
    return at < file_.size() ? file_[at] : 0;
  }
  uint64_t Number(size_t &&at) const {
    return Number(at);
  }
  uint64_t Number(size_t &at) const {
    uint64_t sum = 0;
    uint8_t byte;
    unsigned shift = 0;
    do {
      byte = Byte(at++);
      const uint32_t group = static_cast<uint32_t>(byte & 0x7F) << shift % 32;
      sum += static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(group)));
      shift += 7;
    } while (byte & 0x80);
    return sum;
  }

  const Bytes &file_;
  std::set<uint64_t> frequencies_;
  double once_ = 0;
  double repetitions_ = 0;
};

}  // namespace fuzz
