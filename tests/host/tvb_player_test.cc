// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The player's rules against the driver: what the rules tell of a file is what its play shows.
#include "tvb/player.h"

#include <bit>
#include <limits>
#include <random>

#include "session.h"
#include "tvb/play_order.h"

namespace {

using image::Bytes;

// What happens on the lines while the driver stands at one position of the image.
struct Step {
  uint64_t position = 0;
  uint64_t hz = 0;
  uint64_t clocks = 0;
  uint64_t calls = 0;  // of pin callbacks

  bool operator==(const Step &) const = default;
};

void PrintTo(const Step &step, std::ostream *out) {
  *out << "at " << step.position << ": " << step.clocks << " clocks, " << step.calls << " calls, "
       << step.hz << " Hz";
}

// Steps of the same place and frequency are one, as where a loop plays but one shift.
void Append(std::vector<Step> &steps, const Step &step) {
  if (steps.empty() || steps.back().position != step.position || steps.back().hz != step.hz) {
    steps.push_back({step.position, step.hz, 0, 0});
  }
  steps.back().clocks += step.clocks;
  steps.back().calls += step.calls;
}

// Watches downloads. TDO reads 0.
class TvbPlayer : public shim::Test {
 protected:
  TvbPlayer() {
    AllowLeaks(shim::kAnyLeaks);  // the look at the first record keeps a block
    pins_.Record(false);
    pins_.OnWrite([this](shim::Line line, bool level) {
      const bool rises = line == shim::kTck && level && !tck_;
      tck_ = line == shim::kTck ? level : tck_;
      See(rises);
    });
    pins_.OnRead([this] {
      See(false);
      return 0;
    });
  }

  void See(bool clock) {
    if (in_records_) {
      Append(seen_, {g_pos, g_freq, clock, 1});
    } else {
      clocks_before_ += clock;
    }
  }

  s32 Play(const Bytes &file) {
    shim::ResetMessages();
    shim::ResetClock();
    shim::SetSchedClockStep(elapsed_ns_);
    in_records_ = false;
    // The line about the IDCODE, or about none, is the last thing before the first record.
    shim::OnMessage([this](const shim::Message &message) {
      in_records_ = in_records_ || message.text.find(" CHIP ") != std::string::npos;
    });
    clocks_before_ = 0;
    seen_.clear();
    const Guarded owned(file);
    return TvbToVec(static_cast<download_context *>(pins_.context()), owned.data(),
                    static_cast<u32>(file.size()));
  }

  shim::Pins pins_;
  bool tck_ = true;
  bool in_records_ = false;
  uint64_t clocks_before_ = 0;  // the first record
  std::vector<Step> seen_;      // from the first record on
  uint64_t elapsed_ns_ = 0;     // that the clocks of each run-test take
};

// Records of all kinds, TDO being expected to read 0.
class RandomFile {
 public:
  explicit RandomFile(std::mt19937 &random) : random_(random), plain_(random() % 2 == 0) {}

  Bytes Make() {
    Bytes file = image::Header(plain_ ? image::kRaw : 0);
    Append(file, First());
    for (uint32_t count = random_() % 14; count > 0; --count) {
      Append(file, Next());
    }
    return file;
  }

 private:
  static void Append(Bytes &bytes, const Bytes &more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
  }

  uint32_t Below(uint32_t limit) {
    return random_() % limit;
  }

  Bytes Data(uint64_t bits) {
    Bytes data((bits + 7) / 8);
    for (uint8_t &byte : data) {
      byte = static_cast<uint8_t>(random_());
    }
    return data;
  }

  // Without the end tag, at which the look at the first record ends; and so short that what is left
  // of them leaves room for the bits of the IDCODE.
  Bytes Pad(uint8_t opcode) {
    const uint64_t bits = Below(3) == 0 ? 0 : Below(16);
    return image::Pad(opcode, bits, Bytes((bits + 7) / 8, 0xA5));
  }

  Bytes Field(uint8_t tag, const Bytes &data) {
    return image::Field(tag, plain_ ? data : image::Join({{0}, data}));
  }

  Bytes Shift(uint8_t opcode) {
    const uint64_t bits = Below(5) == 0 ? 0 : Below(40);
    Bytes fields;
    if (Below(10) != 0) {
      Append(fields, Field(image::kTagTdi, Data(bits)));
    }
    if (Below(2) == 0) {
      Append(fields, Field(image::kTagTdo, Bytes((bits + 7) / 8)));
      Append(fields, Field(image::kTagMask, Data(bits)));
    }
    return image::Shift(opcode, bits, fields);
  }

  // Instructions of which each is likely to be BYPASS.
  Bytes Instructions() {
    Bytes instructions = Data(8 * Below(9));
    for (uint8_t &byte : instructions) {
      byte = Below(3) != 0 ? 0xFF : byte;
    }
    const uint64_t bits = 8 * instructions.size();
    return image::Shift(image::kSir, bits, Field(image::kTagTdi, instructions));
  }

  Bytes First() {
    switch (Below(5)) {
      case 0:
        return Instructions();
      case 1: {
        const tvb::ChainPlace place = {Below(6), Below(6)};
        const tvb::Buffer data = tvb::ChainInstructions(place, static_cast<uint8_t>(Below(255)));
        return image::Shift(image::kSir, 8 * data.size(), Field(image::kTagTdi, data));
      }
      case 2:
        return Pad(image::kTdr);
      case 3:
        return Pad(image::kHdr);
      default:
        return Next();
    }
  }

  uint64_t RunTestNumber() {
    switch (Below(8)) {
      case 0:
        return 32768 + Below(40);
      case 1:
        return 10 + Below(5000);
      default:
        return 10 + Below(300);
    }
  }

  Bytes RunTest() {
    Bytes fields;
    for (uint32_t count = Below(4); count > 0; --count) {
      // A pass tag has no number. A count below the offset takes from the others.
      const Bytes choices[] = {{19},
                               image::CycleField(RunTestNumber()),
                               image::Join({image::CycleField(4), image::CycleField(20)}),
                               image::WaitField(RunTestNumber())};
      Append(fields, choices[Below(4)]);
    }
    const Bytes body = image::Join({{1}, fields, {image::kTagEnd}});
    switch (Below(8)) {
      case 0:
        return image::Record(image::kRunTest, {static_cast<uint8_t>(2 * Below(2))});  // no gate
      case 1:
        // Passed over for its length; what follows the gate byte must then be a record.
        return image::RecordOfLength(image::Number(23), image::kRunTest, {1});
      default:
        return image::Record(image::kRunTest, body);
    }
  }

  Bytes Next() {
    constexpr uint32_t kRates[] = {0, 0, 999, 1000, 32768, 999999, 1000000, 1234567, 2000000};
    constexpr uint8_t kPads[] = {image::kHir, image::kTir, image::kHdr, image::kTdr};
    switch (Below(12)) {
      case 0:
      case 1:
        return Shift(image::kSir);
      case 2:
      case 3:
      case 4:
        return Shift(image::kSdr);
      case 5:
      case 6:
        return Pad(kPads[Below(4)]);
      case 7:
        return image::Frequency(kRates[Below(9)]);
      case 8:
        return image::Loop(Below(4));
      case 9:
        return image::EndLoop();
      case 10:
        return RunTest();
      default:
        return Below(2) == 0 ? RunTest() : image::Record(image::kReserved, Data(8 * Below(5)));
    }
  }

  std::mt19937 &random_;
  bool plain_;
};

// What the rules tell of a file.
struct Forecast {
  Forecast(const Bytes &file, const tvb::Player &before, uint64_t elapsed_ns)
      : order(file, tvb::ReadHeader(file), before) {
    while (const auto played = order.Next()) {
      const tvb::RecordView &record = played->record;
      EXPECT_FALSE(record.fault);
      if (played->step == 1) {
        place = tvb::PlaceToldBy(file, record);
      }
      const tvb::Player &player = order.player();
      const uint64_t hz = player.rate().Exact().value_or(0);
      if (record.IsShift()) {
        displaced = displaced || player.pads() != player.pad_lengths();
        Append(steps, {record.end, hz, played->clocks, ScanCalls(file, *played)});
      } else if (record.Runs()) {
        Append(steps, {record.end, hz, played->clocks, tvb::RunTestPinCalls(played->clocks)});
        waited_ns += tvb::RunTestWait(played->clocks, static_cast<uint32_t>(hz), elapsed_ns);
      }
    }
  }

  static uint64_t ScanCalls(const Bytes &file, const tvb::PlayedRecord &played) {
    const tvb::RecordView &record = played.record;
    const Bytes mask = tvb::FieldData(file, record, tvb::kTagMask);
    uint64_t compared = 0;
    for (uint32_t bit = 0; bit < record.bits() && !mask.empty(); ++bit) {
      compared += mask[bit / 8] >> (7 - bit % 8) & 1;
    }
    return tvb::ScanPinCalls(played.clocks, record.bits(), compared);
  }

  tvb::PlayOrder order;
  tvb::ChainPlace place;
  std::vector<Step> steps;
  bool displaced = false;  // the calls of some shift are not those of the rules
  uint64_t waited_ns = 0;
};

std::vector<Step> WithoutCalls(std::vector<Step> steps) {
  for (Step &step : steps) {
    step.calls = 0;
  }
  return steps;
}

// Ten for the reset and one to Run-Test/Idle; the target's IDCODE instruction and its 32 bits.
uint64_t ClocksBefore(const tvb::ChainPlace &place, const tvb::PadBits &pads = {}) {
  const uint64_t instructions = tvb::kInstructionBits * place.devices();
  return 11 + tvb::ScanClocks(tvb::kSir, pads.hir + instructions + pads.tir) +
         tvb::ScanClocks(tvb::kSdr, pads.hdr + uint64_t{place.after} + 32 + pads.tdr);
}

// A player lives through a few files.
TEST_F(TvbPlayer, RandomFilesPlayAsTheRulesTell) {
  std::mt19937 random(20241121);
  uint64_t clocks = 0;
  int displaced = 0;
  int files = 0;
  for (int life = 0; life < 300; ++life) {
    shim::ResetDriverGlobals();
    tvb::Player player;
    for (uint32_t more = 1 + random() % 5; more > 0; --more) {
      ++files;
      elapsed_ns_ = random() % 3 == 0 ? 0 : random() % 300000;
      const Bytes file = RandomFile(random).Make();
      SCOPED_TRACE(::testing::PrintToString(file));
      const Forecast forecast(file, player, elapsed_ns_);
      ASSERT_EQ(Play(file), DOWNLOAD_DONE);
      ASSERT_EQ(WithoutCalls(seen_), WithoutCalls(forecast.steps));
      ASSERT_TRUE(forecast.displaced || seen_ == forecast.steps);
      displaced += forecast.displaced;
      ASSERT_EQ(clocks_before_, ClocksBefore(forecast.place));
      ASSERT_EQ(g_cur_level, forecast.place.before + 1);
      ASSERT_EQ(g_total_level, forecast.place.devices());
      ASSERT_EQ(100000 * shim::DelayCount(), forecast.waited_ns);
      player = forecast.order.player();
      player.EndFile();
      ASSERT_EQ(g_freq, player.rate().Exact().value_or(0));
      ASSERT_EQ(g_hir_len, player.pad_lengths().hir);
      ASSERT_EQ(g_tir_len, player.pad_lengths().tir);
      ASSERT_EQ(g_hdr_len, player.pad_lengths().hdr);
      ASSERT_EQ(g_tdr_len, player.pad_lengths().tdr);
      for (const Step &step : seen_) {
        clocks += step.clocks;
      }
    }
  }
  EXPECT_GT(clocks, 400000u);
  EXPECT_GT(displaced, 100);
  EXPECT_GT(files - displaced, 300);
}

// A file that the driver stops in leaves its headers and trailers to the next.
TEST_F(TvbPlayer, AStoppedFileLeavesItsPads) {
  const Bytes first = image::Join({image::Header(), image::Pad(image::kHdr, 5, {0xA8}),
                                   image::Pad(image::kTir, 3, {0xA0}),
                                   image::Sdr(4, {0}, {0x80}, {0x80}), image::Nothing()});
  const tvb::Player player = Forecast(first, {}, 0).order.player();
  ASSERT_EQ(Play(first), DOWNLOAD_FAILED);
  const Bytes second = image::Join({image::Header(), image::Sdr(9, {1, 2}), image::Sir(4, {0x50})});
  const Forecast forecast(second, player, 0);
  ASSERT_EQ(Play(second), DOWNLOAD_DONE);
  EXPECT_EQ(seen_, forecast.steps);
  EXPECT_EQ(clocks_before_, ClocksBefore({}, player.pads()));
}

// What is measured of a file is what a new player makes of it, where a loop does not change what
// its body finds.
TEST_F(TvbPlayer, TheMeasureOfAFileIsThatOfItsPlay) {
  const Bytes file =
      image::Join({image::Header(), image::Pad(image::kHdr, 3, {0xA0}), image::Loop(5),
                   image::Sdr(9, {1, 2}), image::RunCycles(7), image::EndLoop(), image::Sir(8, {1}),
                   image::Loop(0), image::RunCycles(11), image::EndLoop()});
  const tvb::PlayLength length = tvb::MeasurePlay(file, tvb::ReadHeader(file));
  EXPECT_EQ(length.clocks, 5u * (3 + 3 + 9 + 2 + 7) + (4 + 8 + 2) + 11);
  EXPECT_EQ(length.records, 2u + 5 * 3 + 1 + 1 + 2);
  ASSERT_EQ(Play(file), DOWNLOAD_DONE);
  uint64_t clocks = 0;
  for (const Step &step : seen_) {
    clocks += step.clocks;
  }
  EXPECT_EQ(clocks, length.clocks);
}

// One clock more is more than the driver has memory for.
TEST_F(TvbPlayer, TheLongestScanIsTheDrivers) {
  pins_.OnWrite({});
  for (const uint8_t opcode : {image::kSir, image::kSdr}) {
    const uint64_t header = opcode == image::kSir ? 0 : 1000;
    const uint64_t longest = tvb::kMaxScanClocks - tvb::ScanClocks(opcode, header);
    for (const uint64_t bits : {longest, longest + 1}) {
      shim::ResetDriverGlobals();
      const Bytes file = image::Join(
          {image::Header(), image::Pad(image::kHdr, header, Bytes(header / 8)),
           image::Shift(opcode, bits, image::Field(image::kTagTdi, Bytes((bits + 7) / 8)))});
      const uint64_t writes_before = pins_.writes();
      EXPECT_EQ(Play(file), bits == longest ? DOWNLOAD_DONE : DOWNLOAD_FAILED);
      EXPECT_EQ(pins_.writes() - writes_before > 2 * tvb::kMaxScanClocks, bits == longest);
    }
  }
}

// The driver counts clocks in the argument of this function.
template <typename Count>
uint64_t MaxOf(void (*)(Count)) {
  return std::numeric_limits<Count>::max();
}

// One clock more is a negative number to the driver, which then clocks nothing.
TEST_F(TvbPlayer, NoRunTestIsLongerThanTheDriverCounts) {
  EXPECT_EQ(tvb::kMaxCycles, MaxOf(Quorlan_KeepCycle));
  const Bytes file = image::Join(
      {image::Header(), image::RunTest(image::Join(
                            {image::CycleField(0x7FFFFFFF), image::CycleField(32778 + 32779)}))});
  const tvb::RecordView record = tvb::ReadRecord(file, true, image::kHeaderSize, 1);
  EXPECT_EQ(tvb::RunTestClocks(record, 1000), tvb::kMaxCycles + 1);
  const Forecast forecast(file, {}, 0);
  EXPECT_EQ(Play(file), DOWNLOAD_DONE);
  EXPECT_EQ(seen_, forecast.steps);
  EXPECT_EQ(seen_.back().clocks, 0u);
}

// Has the driver read the fields of a run-test.
class TvbPlayerNumbers : public session::SessionTest {
 protected:
  u64 Cycles(const Bytes &fields, u64 hz = 1000) {
    Load(image::Join({fields, {image::kTagEnd}}));
    g_freq = hz;
    return Quorlan_ProcessRuntestCmd();
  }
};

TEST_F(TvbPlayerNumbers, StoredNumbersReadBack) {
  const uint64_t max_stored = 0x7FFFFFFF;
  EXPECT_EQ(tvb::StoredCycles(tvb::kMaxFieldCycles), max_stored);
  EXPECT_EQ(Cycles(image::CycleField(max_stored)), tvb::kMaxFieldCycles);
  EXPECT_EQ(tvb::StoredMilliseconds(tvb::kMaxMilliseconds), max_stored);
  EXPECT_EQ(Cycles(image::WaitField(max_stored)), tvb::kMaxMilliseconds);
  EXPECT_EQ(tvb::kMaxTime, 1000 * Cycles(image::WaitField(max_stored)));
  // One more is a time in milliseconds.
  const uint32_t stored = tvb::StoredMicroseconds(tvb::kMaxMicroseconds);
  EXPECT_EQ(Cycles(image::WaitField(stored), 1000000), tvb::kMaxMicroseconds);
  EXPECT_EQ(Cycles(image::WaitField(stored + 1), 1000000), 1000u);
  EXPECT_EQ(tvb::StoredMilliseconds(1), stored + 1);
  for (uint64_t n : {0, 1, 32757, 32758, 32759, 32767, 32768}) {
    EXPECT_EQ(Cycles(image::CycleField(tvb::StoredCycles(n))), n);
    EXPECT_EQ(Cycles(image::WaitField(tvb::StoredMicroseconds(n)), 1000000), n);
    if (n > 0) {
      EXPECT_EQ(Cycles(image::WaitField(tvb::StoredMilliseconds(n)), 1000), n);
    }
  }
}

TEST_F(TvbPlayerNumbers, WaitsAreTheDrivers) {
  pins_.Record(false);
  for (const uint32_t hz : {1, 7, 999, 1000000, 2000000000}) {
    for (const uint64_t clocks : {0, 1, 1000, 1123}) {
      const uint64_t required = 1000 * (clocks * 1000000 / hz + 1);  // nanoseconds
      for (const uint64_t missing : {0, 1, 400, 999, 1000, 99999, 100000, 100001, 250400, 300000}) {
        const uint64_t elapsed = required - std::min(required, missing);
        shim::ResetClock();
        shim::SetSchedClock({0, elapsed});
        g_freq = hz;
        Quorlan_KeepCycle(static_cast<s32>(clocks));
        EXPECT_EQ(tvb::RunTestWait(clocks, hz, elapsed), 100000 * shim::DelayCount())
            << clocks << " clocks at " << hz << " Hz, " << missing << " ns missing";
      }
    }
  }
}

TEST_F(TvbPlayerNumbers, InstructionsAreTheDrivers) {
  EXPECT_EQ(g_idcode_pub, tvb::kIdcode);
  const auto download = [this](uint8_t instruction) {
    const tvb::Buffer data = tvb::ChainInstructions({1, 2}, instruction);
    Download(image::Join({image::Header(), image::Sir(8 * data.size(), data)}));
    return g_idcode_pub;
  };
  AllowLeaks(shim::kAnyLeaks);
  for (int instruction = 0; instruction < 0xFF; ++instruction) {
    shim::ResetDriverGlobals();
    const bool other = instruction == tvb::kOtherIdcode;
    EXPECT_EQ(download(static_cast<uint8_t>(instruction)), other ? instruction : tvb::kIdcode);
    EXPECT_EQ(g_cur_level, 2u);
    EXPECT_EQ(g_total_level, 4u);
  }
}

TEST(TvbPlayerRate, WholeKilohertz) {
  EXPECT_TRUE(tvb::IsWholeKilohertz(1000));
  EXPECT_TRUE(tvb::IsWholeKilohertz(2000000000));
  EXPECT_FALSE(tvb::IsWholeKilohertz(1));
  EXPECT_FALSE(tvb::IsWholeKilohertz(999));
  EXPECT_FALSE(tvb::IsWholeKilohertz(1001));
}

// Before a file nothing is known of what earlier ones have set, until it sets 0.
TEST(TvbPlayerRate, IsCertainOnlyAfterZero) {
  tvb::ClockRate rate;
  rate.Run();
  EXPECT_FALSE(rate.Highest());
  EXPECT_EQ(rate.Clocked(), 1000000u);
  rate.Set(5000);
  rate.Set(7000);
  EXPECT_EQ(rate.Highest(), 5000u);
  EXPECT_FALSE(rate.Exact());
  EXPECT_FALSE(rate.certain());
  rate.Set(0);
  EXPECT_TRUE(rate.certain());
  EXPECT_FALSE(rate.Exact());
  rate.Set(7000);
  EXPECT_EQ(rate.Exact(), 7000u);
}

}  // namespace
