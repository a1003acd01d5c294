// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/vcd.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace tool {
namespace {

constexpr uint64_t kDriverWait = 100000;
constexpr size_t kLongText = 1 << 16;
constexpr char kStateCode = '%';

constexpr Line kLines[] = {Line::kTck, Line::kTms, Line::kTdi, Line::kTdo};
constexpr const char *kLineNames[] = {"TCK", "TMS", "TDI", "TDO"};

char CodeOf(Line line) {
  return static_cast<char>('!' + static_cast<int>(line));
}

std::string UnitText(uint64_t unit) {
  return unit >= 1000 ? std::to_string(unit / 1000) + " us" : std::to_string(unit) + " ns";
}

}  // namespace

uint64_t VcdUnit(double call_time) {
  uint64_t unit = kDriverWait;
  while (unit > 1 && std::fmod(call_time, static_cast<double>(unit)) != 0) {
    unit /= 10;
  }
  return unit;
}

Vcd::Vcd(TextSink sink, const Lines &lines, double call_time, uint64_t most_idle_clocks)
    : sink_(std::move(sink)),
      unit_(VcdUnit(call_time)),
      most_idle_clocks_(most_idle_clocks),
      idle_(lines.tap().state() == TapState::kRunTestIdle),
      tms_(lines.level(Line::kTms)) {
  WriteHead(lines);
}

void Vcd::WriteHead(const Lines &lines) {
  Put("$version tvb play $end\n$timescale " + UnitText(unit_) + " $end\n");
  Put("$scope module jtag $end\n");
  for (const Line line : kLines) {
    Put(std::string("$var wire 1 ") + CodeOf(line) + ' ' + kLineNames[static_cast<int>(line)] +
        " $end\n");
  }
  Put(std::string("$var string 1 ") + kStateCode + " state $end\n");
  Put("$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\n");
  for (const Line line : kLines) {
    Put(std::string(1, lines.level(line) ? '1' : '0') + CodeOf(line) + '\n');
  }
  PutState(lines.tap().state());
  Put("$end\n");
}

void Vcd::Changed(Line line, bool level, uint64_t time) {
  if (line == Line::kTms) {
    tms_ = level;
  }
  if (!Rests(line, level, time)) {
    Draw(line, level, time);
  }
}

// Whether a change is one of the clocks that are left out. A fall of TCK is kept back until it is
// known whether the clock leads out of Run-Test/Idle.
bool Vcd::Rests(Line line, bool level, uint64_t time) {
  if (fell_at_) {
    const uint64_t fell_at = *fell_at_;
    fell_at_.reset();
    if (line == Line::kTck && !tms_) {
      return true;
    }
    Draw(Line::kTck, false, fell_at);
    return false;
  }
  if (!idle_ || most_idle_clocks_ == 0 || line != Line::kTck) {
    return false;
  }
  if (level) {
    ++idle_clocks_;
    return false;
  }
  if (idle_clocks_ < most_idle_clocks_) {
    return false;
  }
  fell_at_ = time;
  return true;
}

void Vcd::Draw(Line line, bool level, uint64_t time) {
  StampTime(time);
  text_ += level ? '1' : '0';
  text_ += CodeOf(line);
  text_ += '\n';
}

void Vcd::Entered(TapState state, uint64_t time) {
  idle_ = state == TapState::kRunTestIdle;
  idle_clocks_ = 0;
  StampTime(time);
  PutState(state);
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
  char digits[24] = {'#'};
  char *end = std::to_chars(digits + 1, digits + sizeof digits - 1, stamp).ptr;
  *end++ = '\n';
  text_.append(digits, end);
}

void Vcd::PutState(TapState state) {
  text_ += 's';
  text_ += NameOf(state);
  text_ += ' ';
  text_ += kStateCode;
  text_ += '\n';
}

void Vcd::Put(std::string_view text) {
  text_ += text;
}

void Vcd::FlushIfLong() {
  if (text_.size() >= kLongText) {
    sink_(text_);
    text_.clear();
  }
}

}  // namespace tool
