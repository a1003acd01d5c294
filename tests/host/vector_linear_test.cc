// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Building and playing a shift takes the same time a bit at every length.
#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>
#include <vector>

#include "engine_fixture.h"

namespace {

// Callbacks that cost little, so that the driver's own work is what is measured.
uint64_t calls;

int Count(uint32_t) {
  calls++;
  return 0;
}

using Slot = int (*)(uint32_t);

class VectorLinearTest : public shim::Test {
 protected:
  VectorLinearTest() {
    g_tvb_cpld_cfg = &config_;
    g_tvb_jtag_funcs = reinterpret_cast<const pin_operations *>(slots_);
  }

  // Nanoseconds of this thread's own processor time: other load does not count.
  static double Now() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return 1e9 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec);
  }

  // Nanoseconds a bit for as many shifts of `bits` as make up `total`; the least of several runs.
  double PerBit(uint32_t bits, uint32_t total, int runs) {
    double least = 1e300;
    for (int run = 0; run < runs; ++run) {
      const double begin = Now();
      for (uint32_t done = 0; done < total; done += bits) {
        Quorlan_SvfShiftDataRegister(bits, data_.data(), data_.data(), nullptr);
      }
      least = std::min(least, (Now() - begin) / total);
    }
    return least;
  }

  // Whether shifts of `bits` come within `percent` of those of `reference` bits, measured again
  // some times if they do not: a machine that is busy can only make it look worse.
  bool Within(uint32_t bits, uint32_t reference, uint32_t total, double percent) {
    PerBit(bits, bits, 1);
    for (int attempt = 0; attempt < 8; ++attempt) {
      slow_ = PerBit(bits, total, 3);
      fast_ = PerBit(reference, total, 3);
      if (slow_ <= fast_ * (1 + percent / 100)) {
        return true;
      }
    }
    return false;
  }

  pin_config config_{};
  Slot slots_[8] = {nullptr, nullptr, Count, Count, Count, nullptr, nullptr, nullptr};
  std::vector<uint8_t> data_ = std::vector<uint8_t>(500001, 0x5A);
  double slow_ = 0, fast_ = 0;
};

TEST_F(VectorLinearTest, FourMillionBitsCostNoMoreABitThanFourThousand) {
  EXPECT_TRUE(Within(4000000, 4000, 4000000, 25))
      << slow_ << " ns a bit against " << fast_ << " ns";
}

TEST_F(VectorLinearTest, FourHundredThousandBitsNeither) {
  EXPECT_TRUE(Within(400000, 4000, 400000, 25)) << slow_ << " ns a bit against " << fast_ << " ns";
}

TEST_F(VectorLinearTest, FourThousandBitsCostNoMoreThanSixtyFour) {
  EXPECT_TRUE(Within(4000, 64, 400000, 25)) << slow_ << " ns a bit against " << fast_ << " ns";
}

TEST_F(VectorLinearTest, AllOfItIsPlayed) {
  calls = 0;
  Quorlan_SvfShiftDataRegister(4000000, data_.data(), nullptr, nullptr);
  EXPECT_EQ(calls, 3ull * 4000000 + 10 + 7);
}

}  // namespace
