// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The simulated chain's log of scans and its counters.
#include <gtest/gtest.h>

#include "sim_probe.h"

namespace {

using sim_test::Bits;
using sim_test::Probe;

void ExpectScan(const sim::Scan &scan, sim_scan_kind kind, const std::string &tdi,
                const std::string &tdo, uint64_t idle_clocks) {
  EXPECT_EQ(scan.kind, kind);
  EXPECT_EQ(scan.tdi, tdi);
  EXPECT_EQ(scan.tdo, tdo);
  EXPECT_EQ(scan.idle_clocks, idle_clocks);
}

TEST(SimLog, HoldsEveryScanInOrder) {
  sim::Chain chain("idcode=0x0A014C35");
  Probe probe(chain);
  probe.Reset();
  probe.Idle(5);
  EXPECT_TRUE(chain.Scans().empty());
  probe.Instruct(6);
  probe.ScanDr(Bits(0x12345678, 32));
  probe.Idle(7);
  probe.ScanDr("1");
  probe.Idle(1);
  const std::vector<sim::Scan> scans = chain.Scans();
  ASSERT_EQ(scans.size(), 3u);
  ExpectScan(scans[0], SIM_SCAN_IR, Bits(6, 8), "10000000", 0);
  ExpectScan(scans[1], SIM_SCAN_DR, Bits(0x12345678, 32), Bits(0x0A014C35, 32), 7);
  ExpectScan(scans[2], SIM_SCAN_DR, "1", "1", 1);
  for (uint32_t i = 0; i < scans.size(); ++i) {
    EXPECT_EQ(scans[i].number, i + 1);
  }
  EXPECT_EQ(chain.DroppedScans(), 0u);
}

TEST(SimLog, TdoIsAsTheLineStood) {
  sim::Chain chain("idcode=0x0A014C35");
  Probe probe(chain);
  probe.Reset();
  chain.SetFaults("tdo-stuck-1");
  probe.ScanDr("0000");
  EXPECT_EQ(chain.Scans().at(0).tdo, "1111");
}

TEST(SimLog, ScanUnderWayIsNotThereYet) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("10001");
  EXPECT_TRUE(chain.Scans().empty());
  probe.Clock(true);
  EXPECT_EQ(chain.state(), SIM_UPDATE_DR);
  ASSERT_EQ(chain.Scans().size(), 1u);
  EXPECT_EQ(chain.Scans()[0].tdi, "00");
}

TEST(SimLog, ScanWithoutBits) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("10110110110");
  const std::vector<sim::Scan> scans = chain.Scans();
  ASSERT_EQ(scans.size(), 2u);
  ExpectScan(scans[0], SIM_SCAN_DR, "", "", 0);
  ExpectScan(scans[1], SIM_SCAN_IR, "", "", 0);
}

TEST(SimLog, PausedScanIsOne) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("100");
  probe.Clock(false, true);
  probe.Clock(true, true);
  probe.Walk("0010");
  probe.Clock(true, true);
  probe.Walk("10");
  ASSERT_EQ(chain.Scans().size(), 1u);
  ExpectScan(chain.Scans()[0], SIM_SCAN_DR, "111", "011", 0);
}

TEST(SimLog, ClearStartsAgain) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  probe.ScanDr("10");
  chain.ClearLog();
  EXPECT_TRUE(chain.Scans().empty());
  probe.Idle(3);
  probe.ScanDr("0110");
  ASSERT_EQ(chain.Scans().size(), 1u);
  EXPECT_EQ(chain.Scans()[0].number, 1u);
  EXPECT_EQ(chain.Scans()[0].tdi, "0110");
}

TEST(SimLog, ClearUnderWayForgetsThatScan) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("1000");
  chain.ClearLog();
  probe.Walk("0110");
  EXPECT_TRUE(chain.Scans().empty());
  EXPECT_EQ(chain.DroppedScans(), 0u);
  probe.ScanDr("01");
  EXPECT_EQ(chain.Scans().size(), 1u);
}

TEST(SimLog, WithoutMemoryEveryScanIsDropped) {
  sim::Chain chain("bypass", 0);
  Probe probe(chain);
  probe.Reset();
  probe.ScanDr("01");
  probe.ScanIr("11111111");
  EXPECT_TRUE(chain.Scans().empty());
  EXPECT_EQ(chain.DroppedScans(), 2u);
}

// A record costs its head and a byte for every four bits, rounded up to eight bytes.
TEST(SimLog, ScanThatDoesNotFitIsDroppedWhole) {
  const size_t room = 2 * sizeof(sim_scan) + 16;
  sim::Chain chain("bypass", room);
  Probe probe(chain);
  probe.Reset();
  probe.ScanDr(std::string(32, '1'));
  probe.Idle(2);
  probe.ScanDr(std::string(33, '1'));
  probe.Idle(9);
  probe.ScanDr(std::string(32, '0'));
  probe.ScanDr("");
  std::vector<sim::Scan> scans = chain.Scans();
  ASSERT_EQ(scans.size(), 2u);
  ExpectScan(scans[0], SIM_SCAN_DR, std::string(32, '1'), "0" + std::string(31, '1'), 2);
  ExpectScan(scans[1], SIM_SCAN_DR, std::string(32, '0'), std::string(32, '0'), 0);
  EXPECT_EQ(scans[0].number, 1u);
  EXPECT_EQ(scans[1].number, 3u);
  EXPECT_EQ(chain.DroppedScans(), 2u);
  chain.ClearLog();
  EXPECT_EQ(chain.DroppedScans(), 0u);
}

TEST(SimLog, PowerLossDropsTheScanUnderWay) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  probe.Walk("1000");
  sim_chain_power_cycle(chain.get());
  EXPECT_EQ(chain.DroppedScans(), 1u);
  probe.Reset();
  probe.ScanDr("1");
  EXPECT_EQ(chain.Scans().size(), 1u);
}

TEST(SimLog, BitsPastTheEndAreZero) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  chain.SetFaults("tdo-stuck-1");
  probe.ScanDr("11");
  const sim_scan *scan = sim_chain_first_scan(chain.get());
  ASSERT_NE(scan, nullptr);
  EXPECT_EQ(scan->bits, 2u);
  EXPECT_EQ(sim_scan_tdi(scan, 1), 1);
  EXPECT_EQ(sim_scan_tdi(scan, 2), 0);
  EXPECT_EQ(sim_scan_tdo(scan, 2), 0);
  EXPECT_EQ(sim_chain_next_scan(chain.get(), scan), nullptr);
}

TEST(SimLog, BitsPastTheEndAreZeroInUsedMemory) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  chain.SetFaults("tdo-stuck-1");
  probe.ScanDr("11111111");
  chain.ClearLog();
  probe.ScanDr("1111");
  const sim_scan *scan = sim_chain_first_scan(chain.get());
  ASSERT_NE(scan, nullptr);
  EXPECT_EQ(sim_scan_tdi(scan, 4), 0);
  EXPECT_EQ(sim_scan_tdo(scan, 4), 0);
}

TEST(SimLog, LongScan) {
  sim::Chain chain("bypass");
  Probe probe(chain);
  probe.Reset();
  std::string data;
  for (unsigned bit = 0; bit < 1000000; ++bit) {
    data.push_back(bit % 3 == 0 || bit % 1001 == 7 ? '1' : '0');
  }
  const std::string tdo = probe.ScanDr(data);
  EXPECT_EQ(tdo, "0" + data.substr(0, data.size() - 1));
  ASSERT_EQ(chain.Scans().size(), 1u);
  EXPECT_EQ(chain.Scans()[0].tdi, data);
  EXPECT_EQ(chain.Scans()[0].tdo, tdo);
}

TEST(SimCounters, CountEveryClockAndScan) {
  sim::Chain chain("bypass;bypass");
  Probe probe(chain);
  probe.Reset();
  probe.ScanIr(std::string(16, '1'));
  probe.Idle(4);
  probe.ScanDr("101");
  const sim_counters &counters = chain.counters();
  EXPECT_EQ(counters.ir_scans, 1u);
  EXPECT_EQ(counters.dr_scans, 1u);
  EXPECT_EQ(counters.clocks[SIM_TEST_LOGIC_RESET], 6u);
  EXPECT_EQ(counters.clocks[SIM_SHIFT_IR], 16u);
  EXPECT_EQ(counters.clocks[SIM_SHIFT_DR], 3u);
  EXPECT_EQ(counters.clocks[SIM_RUN_TEST_IDLE], 6u);
  EXPECT_EQ(counters.clocks[SIM_SELECT_DR_SCAN], 2u);
  EXPECT_EQ(counters.clocks[SIM_PAUSE_DR], 0u);
  sim_chain_clear_counters(chain.get());
  EXPECT_EQ(counters.clocks[SIM_SHIFT_IR], 0u);
  EXPECT_EQ(counters.ir_scans, 0u);
  EXPECT_EQ(counters.tms_changes, 0u);
}

}  // namespace
