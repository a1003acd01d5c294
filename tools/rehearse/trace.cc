// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/trace.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <cmath>

#include "tvb/player.h"

namespace tool {
namespace {

constexpr size_t kLongText = 1 << 16;
constexpr char kStateCode = '%';

constexpr Line kLines[] = {Line::kTck, Line::kTms, Line::kTdi, Line::kTdo};

const char *NameOf(Line line) {
  constexpr const char *kNames[] = {"TCK", "TMS", "TDI", "TDO"};
  return kNames[static_cast<int>(line)];
}

char CodeOf(Line line) {
  return static_cast<char>('!' + static_cast<int>(line));
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

Vcd::Vcd(TextSink sink, const Lines &lines, double call_time, uint64_t max_idle_clocks)
    : sink_(std::move(sink)),
      unit_(VcdUnit(call_time)),
      max_idle_clocks_(max_idle_clocks),
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
  text_ += fmt::format("$var string 1 {} state $end\n", kStateCode);
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
  text_ += 's';
  text_ += StandardName(state);
  text_ += ' ';
  text_ += kStateCode;
  text_ += '\n';
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
