// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/trace.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "tvb/player.h"

namespace tool {
namespace {

constexpr size_t kLongText = 1 << 16;
constexpr char kStateCode = '%';  // of a string, or of the lowest bit
constexpr int kStateBits = 4;

constexpr Line kLines[] = {Line::kTck, Line::kTms, Line::kTdi, Line::kTdo};

const char *NameOf(Line line) {
  constexpr const char *kNames[] = {"TCK", "TMS", "TDI", "TDO"};
  return kNames[static_cast<int>(line)];
}

char CodeOf(Line line) {
  return static_cast<char>('!' + static_cast<int>(line));
}

char CodeOfStateBit(int bit) {
  return static_cast<char>(kStateCode + bit);
}

std::string UnitText(uint64_t unit) {
  return unit >= 1000 ? fmt::format("{} us", unit / 1000) : fmt::format("{} ns", unit);
}

}  // namespace

uint64_t VcdUnit(double call_time) {
  uint64_t unit = tvb::kWaitUnit;
  while (unit > 1 && std::fmod(call_time, static_cast<double>(unit)) != 0) {
    unit /= 10;
  }
  return unit;
}

std::optional<StateForm> FindStateForm(std::string_view name) {
  constexpr std::string_view kNames[] = {"none", "bits", "string"};
  const auto *found = std::find(std::begin(kNames), std::end(kNames), name);
  return found == std::end(kNames)
             ? std::nullopt
             : std::optional<StateForm>(static_cast<StateForm>(found - kNames));
}

Vcd::Vcd(TextSink sink, const Lines &lines, double call_time, uint64_t max_idle_clocks,
         StateForm state_form)
    : sink_(std::move(sink)),
      unit_(VcdUnit(call_time)),
      max_idle_clocks_(max_idle_clocks),
      state_form_(state_form),
      idle_(lines.state() == svf::TapState::kIdle),
      tms_(lines.level(Line::kTms)) {
  WriteHead(lines);
}

void Vcd::WriteHead(const Lines &lines) {
  text_ += fmt::format("$version tvb play $end\n$timescale {} $end\n", UnitText(unit_));
  text_ += "$scope module jtag $end\n";
  for (const Line line : kLines) {
    text_ += fmt::format("$var wire 1 {} {} $end\n", CodeOf(line), NameOf(line));
  }
  if (state_form_ == StateForm::kString) {
    text_ += fmt::format("$var string 1 {} state $end\n", kStateCode);
  } else if (state_form_ == StateForm::kBits) {
    for (int bit = kStateBits - 1; bit >= 0; --bit) {
      text_ += fmt::format("$var wire 1 {} state [{}] $end\n", CodeOfStateBit(bit), bit);
    }
  }
  text_ += "$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\n";
  for (const Line line : kLines) {
    PutLevel(line, lines.level(line));
  }
  PutState(lines.state());
  text_ += "$end\n";
}

void Vcd::Add(const LineChange &change) {
  if (change.line == Line::kTms) {
    tms_ = change.level;
  }
  if (!Rests(change)) {
    Draw(change.line, change.level, change.time);
  }
  if (change.entered) {
    idle_ = change.state == svf::TapState::kIdle;
    idle_clocks_ = 0;
    StampTime(change.time);
    PutState(change.state);
  }
}

// Whether a change belongs to a clock that is not drawn. A falling edge of TCK is buffered until it
// is known whether the clock leads out of Run-Test/Idle.
bool Vcd::Rests(const LineChange &change) {
  if (fell_at_) {
    const uint64_t fell_at = *fell_at_;
    fell_at_.reset();
    if (change.line == Line::kTck && !tms_) {
      return true;
    }
    Draw(Line::kTck, false, fell_at);
    return false;
  }
  if (!idle_ || max_idle_clocks_ == 0 || change.line != Line::kTck) {
    return false;
  }
  if (change.level) {
    ++idle_clocks_;
    return false;
  }
  if (idle_clocks_ < max_idle_clocks_) {
    return false;
  }
  fell_at_ = change.time;
  return true;
}

void Vcd::Draw(Line line, bool level, uint64_t time) {
  StampTime(time);
  PutLevel(line, level);
}

void Vcd::Finish(uint64_t time) {
  if (fell_at_) {
    Draw(Line::kTck, false, *fell_at_);
  }
  StampTime(time);
  sink_(text_);
  text_.clear();
}

void Vcd::StampTime(uint64_t time) {
  const uint64_t stamp = time / unit_;
  if (stamp == stamped_) {
    return;
  }
  stamped_ = stamp;
  FlushIfLong();
  char line[24];
  text_.append(line, fmt::format_to(line, FMT_COMPILE("#{}\n"), stamp));
}

void Vcd::PutLevel(Line line, bool level) {
  text_ += level ? '1' : '0';
  text_ += CodeOf(line);
  text_ += '\n';
}

void Vcd::PutState(svf::TapState state) {
  if (state_form_ == StateForm::kBits) {
    PutStateBits(static_cast<unsigned>(state));
  } else if (state_form_ == StateForm::kString) {
    text_ += fmt::format("s{} {}\n", StandardName(state), kStateCode);
  }
}

// Those that have changed.
void Vcd::PutStateBits(unsigned bits) {
  for (int bit = kStateBits - 1; bit >= 0; --bit) {
    const unsigned level = bits >> bit & 1;
    if (!state_bits_ || (*state_bits_ >> bit & 1) != level) {
      text_ += level != 0 ? '1' : '0';
      text_ += CodeOfStateBit(bit);
      text_ += '\n';
    }
  }
  state_bits_ = bits;
}

void Vcd::FlushIfLong() {
  if (text_.size() >= kLongText) {
    sink_(text_);
    text_.clear();
  }
}

void ScanList::Add(const LineScan &scan) {
  Write(scan, "\n");
}

void ScanList::Finish(const LineScan &scan) {
  if (scan.open) {
    Write(scan, " stopped\n");
  }
}

void ScanList::Write(const LineScan &scan, std::string_view end) {
  const uint64_t number = scan.of_file == nullptr ? 0 : scan.of_file->number;
  sink_(ScanText(number, scan).append(end));
}

}  // namespace tool
