// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/time_table.h"

#include <fmt/format.h>

#include "tools/cli/text.h"

namespace tool {
namespace {

uint64_t Calls(const LineCounts &counts) {
  return counts.writes[0] + counts.writes[1] + counts.writes[2] + counts.reads;
}

uint64_t ClocksIn(const LineCounts &counts, TapState state) {
  return counts.clocks[static_cast<int>(state)];
}

std::string Row(const char *label, uint64_t number, const std::string &detail) {
  return fmt::format("  {:<11}{:>15}  {}\n", label, NumberText(number), detail);
}

std::string TimeRow(const char *label, uint64_t nanoseconds) {
  return fmt::format("  {:<11}{:>15}\n", label, TimeText(nanoseconds));
}

std::string CallDetail(const LineCounts &counts) {
  return fmt::format("TCK {}, TMS {}, TDI {}, TDO {}", NumberText(counts.writes[0]),
                     NumberText(counts.writes[1]), NumberText(counts.writes[2]),
                     NumberText(counts.reads));
}

std::string ClockDetail(const LineCounts &counts) {
  const uint64_t ir = ClocksIn(counts, TapState::kShiftIr);
  const uint64_t dr = ClocksIn(counts, TapState::kShiftDr);
  const uint64_t idle = ClocksIn(counts, TapState::kRunTestIdle);
  return fmt::format("Shift-IR {}, Shift-DR {}, Run-Test/Idle {}, on the way {}", NumberText(ir),
                     NumberText(dr), NumberText(idle),
                     NumberText(AllClocks(counts) - ir - dr - idle));
}

}  // namespace

uint64_t AllClocks(const LineCounts &counts) {
  uint64_t sum = 0;
  for (const uint64_t clocks : counts.clocks) {
    sum += clocks;
  }
  return sum;
}

std::string TimeTable(const LineCounts &counts, const BoardClock &clock, double call_time) {
  const uint64_t calls = Calls(counts);
  const auto clocking = static_cast<uint64_t>(static_cast<double>(calls) * call_time);
  std::string table = fmt::format("on a board, at {} ns a pin call:\n", RealText(call_time));
  table += Row("pin calls", calls, CallDetail(counts));
  table += Row("clocks", AllClocks(counts), ClockDetail(counts));
  table += Row("waits", clock.waits(), "of 100 us, after run-tests that were clocked too fast");
  table += TimeRow("clocking", clocking);
  table += TimeRow("waiting", clock.waited());
  table += TimeRow("whole", clocking + clock.waited());
  return table;
}

}  // namespace tool
