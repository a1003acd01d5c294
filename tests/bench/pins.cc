// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "pins.h"

#include <cstring>

namespace bench {

namespace {

enum Call : uint8_t { kTckLow, kTckHigh, kTmsLow, kTmsHigh, kTdiLow, kTdiHigh, kRead };

Recording *recording;

Call DriveOf(u32 gpio, bool level) {
  const Call low = gpio == kPins.tck ? kTckLow : gpio == kPins.tms ? kTmsLow : kTdiLow;
  return static_cast<Call>(low + level);
}

// A scan starts in Run-Test/Idle, where TMS is low: a TMS that is high tells its first period.
struct Scan {
  size_t period = 0;
  size_t periods = 0;  // 0: no scan
};
Scan scan;

void FollowScan(Call call) {
  if (call == kTmsHigh && scan.periods == 0) {
    scan = {0, std::strlen(reinterpret_cast<const char *>(g_vector))};
  } else if (call == kTckLow && scan.periods > 0 && ++scan.period == scan.periods) {
    scan = {};
  }
}

int RecordDrive(u32 gpio, bool level) {
  const Call call = DriveOf(gpio, level);
  recording->calls.push_back(call);
  recording->clocks += call == kTckHigh;
  FollowScan(call);
  return 0;
}

int RecordHigh(u32 gpio) {
  return RecordDrive(gpio, true);
}

int RecordLow(u32 gpio) {
  return RecordDrive(gpio, false);
}

int RecordRead(u32) {
  const uint8_t level = g_vector[scan.period] >> VECTOR_EXPECTED & 1;
  recording->calls.push_back(kRead);
  recording->levels.push_back(level);
  return level;
}

// A step is a period, by what it does besides clocking, or a call outside of periods.
constexpr uint8_t kTdi = 1;
constexpr uint8_t kTdiLevel = 2;
constexpr uint8_t kTms = 4;
constexpr uint8_t kTmsLevel = 8;
constexpr uint8_t kTdo = 16;
constexpr uint8_t kOutside = 32;  // and the call

// A run's kind: what its periods do, or kAny. It is the low bits of a run.
constexpr unsigned kKindBits = 8;
constexpr uint64_t kAny = 0xFF;
constexpr size_t kRunMin = 6;  // shorter ones are of any kind

// Takes the call that drives a line, if it is there. Returns `drives`, and with it `level` if high.
uint8_t TakeDrive(const std::vector<uint8_t> &calls, size_t *i, Call low, uint8_t drives,
                  uint8_t level) {
  if (*i == calls.size() || (calls[*i] != low && calls[*i] != low + 1)) {
    return 0;
  }
  return static_cast<uint8_t>(calls[(*i)++] == low ? drives : drives | level);
}

uint8_t TakeStep(const std::vector<uint8_t> &calls, size_t *i) {
  size_t next = *i + 1;
  uint8_t step = TakeDrive(calls, &next, kTdiLow, kTdi, kTdiLevel);
  step |= TakeDrive(calls, &next, kTmsLow, kTms, kTmsLevel);
  if (next < calls.size() && calls[next] == kRead) {
    step |= kTdo;
    ++next;
  }
  if (calls[*i] == kTckLow && next < calls.size() && calls[next] == kTckHigh) {
    *i = next + 1;
    return step;
  }
  return kOutside | calls[(*i)++];
}

uint64_t KindOf(uint8_t step) {
  return step & (kTms | kOutside) ? kAny : step & (kTdi | kTdo);
}

void AddRun(std::vector<uint64_t> *runs, uint64_t kind, size_t count) {
  kind = count < kRunMin ? kAny : kind;
  if (kind == kAny && !runs->empty() && (runs->back() & kAny) == kAny) {
    runs->back() += uint64_t{count} << kKindBits;
  } else {
    runs->push_back(uint64_t{count} << kKindBits | kind);
  }
}

void FindSteps(Recording *made) {
  for (size_t i = 0; i < made->calls.size();) {
    made->steps.push_back(TakeStep(made->calls, &i));
  }
  const auto &steps = made->steps;
  for (size_t i = 0; i < steps.size();) {
    const size_t first = i;
    while (i < steps.size() && KindOf(steps[i]) == KindOf(steps[first])) {
      ++i;
    }
    AddRun(&made->runs, KindOf(steps[first]), i - first);
  }
}

struct Target {
  int (*function)(u32);
  u32 gpio;
};

struct Targets {
  explicit Targets(const pin_operations &to)
      : of{{to.drive_low, kPins.tck},  {to.drive_high, kPins.tck}, {to.drive_low, kPins.tms},
           {to.drive_high, kPins.tms}, {to.drive_low, kPins.tdi},  {to.drive_high, kPins.tdi},
           {to.read, kPins.tdo}} {}
  Target of[kRead + 1];
};

jtag_lines LinesOf(const pin_operations &to) {
  return {to.drive_high, to.drive_low, to.read, kPins.tck, kPins.tms, kPins.tdi, kPins.tdo};
}

// Replays a run from `steps` on, and returns where the next one begins.
template <uint64_t kind>
const uint8_t *ReplayRun(const uint8_t *steps, size_t count, const jtag_lines own) {
  for (const uint8_t *const end = steps + count; steps != end; ++steps) {
    own.drive_low(own.tck);
    if constexpr ((kind & kTdi) != 0) {
      m7_drive(&own, own.tdi, *steps & kTdiLevel);
    }
    if constexpr ((kind & kTdo) != 0) {
      own.read(own.tdo);
    }
    own.drive_high(own.tck);
  }
  return steps;
}

inline void ReplayPeriod(uint8_t step, const jtag_lines &lines) {
  lines.drive_low(lines.tck);
  if (step & kTdi) {
    m7_drive(&lines, lines.tdi, step & kTdiLevel);
  }
  if (step & kTms) {
    m7_drive(&lines, lines.tms, step & kTmsLevel);
  }
  if (step & kTdo) {
    lines.read(lines.tdo);
  }
  lines.drive_high(lines.tck);
}

const uint8_t *ReplayAny(const uint8_t *steps, size_t count, const jtag_lines lines,
                         const Targets &targets) {
  for (const uint8_t *const end = steps + count; steps != end; ++steps) {
    if (*steps & kOutside) {
      const Target &target = targets.of[*steps - kOutside];
      target.function(target.gpio);
    } else {
      ReplayPeriod(*steps, lines);
    }
  }
  return steps;
}

}  // namespace

Recording Record(const std::function<void(const pin_operations &operations)> &run) {
  const pin_operations operations = {{}, RecordHigh, RecordLow, RecordRead};
  Recording made;
  recording = &made;
  scan = {};
  run(operations);
  recording = nullptr;
  FindSteps(&made);
  return made;
}

void ReplayCalls(const Recording &recording, const pin_operations &operations) {
  const Targets targets(operations);
  for (const uint8_t call : recording.calls) {
    targets.of[call].function(targets.of[call].gpio);
  }
}

void ReplayPeriods(const Recording &recording, const pin_operations &operations) {
  ReplayAny(recording.steps.data(), recording.steps.size(), LinesOf(operations),
            Targets(operations));
}

void ReplayRuns(const Recording &recording, const pin_operations &operations) {
  const Targets targets(operations);
  const jtag_lines lines = {operations.drive_high,
                            operations.drive_low,
                            operations.read,
                            kPins.tck,
                            kPins.tms,
                            kPins.tdi,
                            kPins.tdo};
  const uint8_t *steps = recording.steps.data();
  for (const uint64_t run : recording.runs) {
    const size_t count = run >> kKindBits;
    switch (run & kAny) {
      case 0:
        steps = ReplayRun<0>(steps, count, lines);
        break;
      case kTdi:
        steps = ReplayRun<kTdi>(steps, count, lines);
        break;
      case kTdo:
        steps = ReplayRun<kTdo>(steps, count, lines);
        break;
      case kTdi | kTdo:
        steps = ReplayRun<kTdi | kTdo>(steps, count, lines);
        break;
      default:
        steps = ReplayAny(steps, count, lines, targets);
    }
  }
}

}  // namespace bench
