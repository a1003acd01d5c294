// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <algorithm>
#include <random>

#include "cases.h"
#include "pins.h"

namespace bench {

namespace {

constexpr u32 kSizes[] = {8, 32, 64, 128, 1024, 4096, 65536, 1000000, 4000000};

// Of the periods of a data scan, those before and after its data.
constexpr u32 kWalk = 3;
constexpr u32 kClosing = 2;

// So that no predictor knows the data of a short scan, a batch has as many scans as give so many
// bits.
constexpr u32 kBatchBits = 65536;

enum class Mode { kNoMask, kMask, kCapture };

const char *NameOf(Mode mode) {
  return mode == Mode::kNoMask ? "no mask" : mode == Mode::kMask ? "mask" : "capture";
}

using Register = std::vector<u8>;

// Scans of one length, one after the other.
class Batch {
 public:
  Batch(u32 bits, Mode mode, bool random, u32 batch_bits = kBatchBits) : bits_(bits), mode_(mode) {
    const u32 bytes = m7_register_bytes(bits);
    zeros_.resize(bytes + 1);
    // As the player has it, a byte of 0 follows a mask.
    ones_.resize(bytes, 0xFF);
    ones_.push_back(0);
    tdi_.resize(std::max(1u, batch_bits / bits), zeros_);
    std::mt19937 generator(1);
    for (Register &tdi : tdi_) {
      std::generate(tdi.begin(), tdi.end(),
                    [&] { return static_cast<u8>(random ? generator() : 0); });
      Shift(tdi);
      vectors_.emplace_back(g_vector, g_vector + length() + 1);
    }
  }

  double clocks() const {
    return static_cast<double>(tdi_.size()) * length();
  }

  void BuildAndPlay() const {
    for (const Register &tdi : tdi_) {
      Shift(tdi);
    }
  }

  // The data's part of a vector.
  void Build() const {
    for (const Register &tdi : tdi_) {
      Quorlan_MemSet(length());
      Quorlan_SvfShiftExit(static_cast<s32>(bits_), tdi.data(), tdo(), KIND_DATA);
    }
  }

  void Play() {
    u8 *const own = g_vector;
    for (Register &vector : vectors_) {
      g_vector = vector.data();
      if (mode_ == Mode::kCapture) {
        kfree(m7_transfer_and_read(mask(), kWalk, kWalk + bits_, length()));
      } else {
        m7_transfer(mask(), kWalk, kWalk + bits_, length());
      }
    }
    g_vector = own;
  }

 private:
  u32 length() const {
    return bits_ + kWalk + kClosing;
  }
  const u8 *tdo() const {
    return mode_ == Mode::kMask ? zeros_.data() : nullptr;
  }
  const u8 *mask() const {
    return mode_ == Mode::kNoMask ? nullptr : ones_.data();
  }

  void Shift(const Register &tdi) const {
    if (mode_ == Mode::kCapture) {
      kfree(Quorlan_SvfShiftDataRegisterAndReadTDO(bits_, tdi.data(), tdo(), mask()));
    } else {
      Quorlan_SvfShiftDataRegister(bits_, tdi.data(), tdo(), mask());
    }
  }

  const u32 bits_;
  const Mode mode_;
  Register zeros_;
  Register ones_;
  std::vector<Register> tdi_;
  std::vector<Register> vectors_;
};

void MeasureBatch(Results &results, const Effort &effort, u32 bits, Mode mode, bool random) {
  g_tvb_jtag_funcs = &kIdle;
  Batch batch(bits, mode, random);
  const Recording recording = Record([&](const pin_operations &operations) {
    g_tvb_jtag_funcs = &operations;
    batch.BuildAndPlay();
  });
  g_tvb_jtag_funcs = &kIdle;
  const std::vector<Subject> subjects = {
      {"build+play", [&] { batch.BuildAndPlay(); }},
      {"play", [&] { batch.Play(); }},
      {"build", [&] { batch.Build(); }},
      {"replay by runs", [&] { ReplayRuns(recording, kIdle); }},
      {"replay by periods", [&] { ReplayPeriods(recording, kIdle); }},
      {"replay by calls", [&] { ReplayCalls(recording, kIdle); }},
  };
  const std::string data = random ? "random, " : "zeros, ";
  results.AddRounds({"scan", "", bits, data + NameOf(mode), "ns/TCK", 0, 0, 0}, subjects,
                    Measure(subjects, effort), 3, batch.clocks());
}

// Whether a bit costs the same in a long scan as in a short one.
void MeasureFlatness(Results &results, const Effort &effort, bool random) {
  const u32 longest = static_cast<u32>(effort.size_max);
  Batch long_scan(longest, Mode::kNoMask, random);
  Batch short_scans(4000, Mode::kNoMask, random, longest);
  const Rounds rounds = Measure(
      {{"long", [&] { long_scan.BuildAndPlay(); }}, {"short", [&] { short_scans.BuildAndPlay(); }}},
      effort);
  const double scale = long_scan.clocks() / short_scans.clocks();
  results.Add({"flat", "over 4000 bits", longest, random ? "random" : "zeros", "ns/TCK",
               Median(rounds[0]) / long_scan.clocks() * 1e9,
               Median(rounds[1]) / short_scans.clocks() * 1e9,
               MedianRatio(rounds[0], rounds[1]) / scale});
}

void MeasureCycles(Results &results, const Effort &effort, s32 cycles) {
  const s32 times = std::max(1, static_cast<s32>(kBatchBits) / cycles);
  const auto run = [&] {
    for (s32 i = 0; i < times; ++i) {
      Quorlan_KeepCycle(cycles);
    }
  };
  const Recording recording = Record([&](const pin_operations &operations) {
    g_tvb_jtag_funcs = &operations;
    run();
  });
  g_tvb_jtag_funcs = &kIdle;
  const std::vector<Subject> subjects = {
      {"run-test", run},
      {"replay by runs", [&] { ReplayRuns(recording, kIdle); }},
      {"replay by periods", [&] { ReplayPeriods(recording, kIdle); }},
      {"replay by calls", [&] { ReplayCalls(recording, kIdle); }},
  };
  results.AddRounds({"runtest", "", static_cast<uint64_t>(cycles), "", "ns/TCK", 0, 0, 0}, subjects,
                    Measure(subjects, effort), 1, static_cast<double>(recording.clocks));
}

}  // namespace

void MeasureScans(Results &results, const Effort &effort) {
  g_tvb_cpld_cfg = &kPins;
  g_status = 1;
  for (const Mode mode : {Mode::kNoMask, Mode::kMask, Mode::kCapture}) {
    for (const bool random : {true, false}) {
      for (const u32 bits : kSizes) {
        if (bits <= effort.size_max) {
          MeasureBatch(results, effort, bits, mode, random);
        }
      }
    }
  }
  g_tvb_jtag_funcs = &kIdle;
  MeasureFlatness(results, effort, true);
  MeasureFlatness(results, effort, false);
  Quorlan_FreeMemory();
}

void MeasureRunTests(Results &results, const Effort &effort) {
  g_tvb_cpld_cfg = &kPins;
  for (const s32 cycles : {10, 100, 1000, 10000, 1000000}) {
    MeasureCycles(results, effort, cycles);
  }
}

}  // namespace bench
