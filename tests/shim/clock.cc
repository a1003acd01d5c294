// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "shim/clock.h"

#include <utility>

namespace shim {
namespace {

constexpr size_t kDelaysKept = 4000000;

struct State {
  std::vector<uint64_t> readings;
  uint64_t read = 0;
  uint64_t next = 0;
  uint64_t step = 1;
  std::function<void()> observer;
  std::vector<int64_t> timestamps;
  uint64_t timestamps_read = 0;
  std::vector<unsigned long> delays;
  uint64_t delay_count = 0;
};

State &TheState() {
  static State state;
  return state;
}

uint64_t ReadSchedClock() {
  State &state = TheState();
  const uint64_t index = state.read++;
  const uint64_t now = index < state.readings.size() ? state.readings[index] : state.next;
  state.next = now + state.step;
  if (state.observer) {
    state.observer();
  }
  return now;
}

int64_t ReadTimestamp() {
  State &state = TheState();
  const uint64_t index = state.timestamps_read++;
  if (state.timestamps.empty()) {
    return 0;
  }
  return index < state.timestamps.size() ? state.timestamps[index] : state.timestamps.back();
}

void KeepDelay(unsigned long xloops) {
  State &state = TheState();
  state.delay_count++;
  if (state.delays.size() < kDelaysKept) {
    state.delays.push_back(xloops);
  }
}

}  // namespace

void SetSchedClock(std::vector<uint64_t> readings) {
  State &state = TheState();
  state.readings = std::move(readings);
  state.read = 0;
  state.next = 0;
  state.step = 1;
}

void SetSchedClockStep(uint64_t ns) {
  SetSchedClock({});
  TheState().step = ns;
}

void OnSchedClock(std::function<void()> observer) {
  TheState().observer = std::move(observer);
}

uint64_t SchedClockReadings() {
  return TheState().read;
}

void SetTimestamps(std::vector<int64_t> readings) {
  State &state = TheState();
  state.timestamps = std::move(readings);
  state.timestamps_read = 0;
}

uint64_t TimestampReadings() {
  return TheState().timestamps_read;
}

const std::vector<unsigned long> &Delays() {
  return TheState().delays;
}

uint64_t DelayCount() {
  return TheState().delay_count;
}

void ResetClock() {
  TheState() = State();
}

}  // namespace shim

extern "C" {

unsigned long long sched_clock(void) {
  return shim::ReadSchedClock();
}

int64_t log_get_timestamp_ms(void) {
  return shim::ReadTimestamp();
}

void __const_udelay(unsigned long xloops) {
  shim::KeepDelay(xloops);
}

}  // extern "C"
