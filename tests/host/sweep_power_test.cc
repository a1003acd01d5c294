// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The power of the chain is lost at each clock of a download in turn, and comes back for another
// download of the same file: that one must make the part what it should be.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>

#include "bench.h"
#include "demo/part_file.h"

namespace {

using bench::Bench;
using bench::Lines;

constexpr uint64_t kStep = M7_SANITIZED ? 16 : 1;

uint64_t Clocks(Bench &bench) {
  uint64_t clocks = 0;
  for (const sim_u64 count : bench.chain().counters().clocks) {
    clocks += count;
  }
  return clocks;
}

// The demo's chain and file.
constexpr demo::Part kPart = {0x0A014C35, 64, 128, 1000, 50};
constexpr char kChain[] = "idcode=0x13;idcode=0x0A014C35,part=64x128,erase=1000,program=50;bypass";

class SweepPower : public shim::Test {
 protected:
  SweepPower() {
    AllowLeaks(shim::kAnyLeaks);
    EXPECT_EQ(bench_.Download(file_), 1);
    memory_ = bench_.Memory(2);
    clocks_ = Clocks(bench_);
  }

  // Downloads while the power goes at that clock, and turns it on again.
  s32 LosePowerAt(uint64_t clock) {
    const sim_fault lost = {SIM_FAULT_POWER_LOST, static_cast<sim_u32>(clock), 0};
    EXPECT_EQ(sim_chain_set_fault(bench_.chain().get(), &lost), 0);
    const s32 result = bench_.Download(file_);
    sim_chain_power_cycle(bench_.chain().get());
    return result;
  }

  const tvb::Buffer file_ =
      demo::PartFile({1, 1}, kPart)
          .Whole(
              demo::RowsOfText(kPart, "This configuration was programmed over four GPIO lines. "));
  Bench bench_{kChain};
  Lines memory_;
  uint64_t clocks_ = 0;
};

TEST_F(SweepPower, TheFileAgainMakesItGood) {
  std::set<Lines> seen;  // what another download has been tried on
  uint64_t cuts = 0;
  uint64_t failed = 0;
  uint64_t damaged = 0;
  for (uint64_t clock = 1; clock <= clocks_; clock += kStep) {
    ++cuts;
    failed += LosePowerAt(clock) == 1 ? 0 : 1;
    Lines left = bench_.Memory(2);
    damaged += left == memory_ ? 0 : 1;
    if (seen.insert(std::move(left)).second) {
      ASSERT_EQ(bench_.Download(file_), 1) << "after a loss at clock " << clock;
      ASSERT_EQ(bench_.Memory(2), memory_) << "after a loss at clock " << clock;
    }
  }
  std::printf(
      "%ju of %ju clocks: %ju downloads failed, %ju left the part damaged, in %zu ways; the "
      "same file made each of these good\n",
      uintmax_t{cuts}, uintmax_t{clocks_}, uintmax_t{failed}, uintmax_t{damaged}, seen.size());
  EXPECT_GT(clocks_, 20000u);
  EXPECT_GT(failed, cuts * 9 / 10);
  EXPECT_GT(damaged, cuts / 10);
  EXPECT_GT(seen.size(), cuts / 10);
}

// What is under way becomes garbage, the rest of the memory stays.
TEST_F(SweepPower, OnlyTheRowInFlightIsLost) {
  const Lines blank(64, std::string(128, '1'));
  for (uint64_t clock = 1; clock <= clocks_; clock += 97) {
    ASSERT_EQ(bench_.Download(file_), 1);
    LosePowerAt(clock);
    size_t programmed = 0;
    size_t erased = 0;
    size_t others = 0;
    const Lines left = bench_.Memory(2);
    for (size_t row = 0; row < left.size(); ++row) {
      (left[row] == memory_[row] ? programmed : left[row] == blank[row] ? erased : others) += 1;
    }
    ASSERT_TRUE(others <= 1 || others >= 63) << clock << ": " << others << " rows are garbage";
  }
}

}  // namespace
