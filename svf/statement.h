// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What SVF statements say, each by itself: nothing here knows of an earlier one. Every offset is in
// bytes from the start of the text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "svf/decimal.h"
#include "svf/hex.h"
#include "svf/tap.h"

namespace svf {

// The six registers that data is stated for.
enum class Register : uint8_t { kSir, kSdr, kHir, kTir, kHdr, kTdr };
constexpr size_t kRegisters = 6;

// "SIR".
std::string_view Name(Register which);

// True for the four that are stored and go with every later scan.
inline bool IsPad(Register which) {
  return which != Register::kSir && which != Register::kSdr;
}

enum class Field : uint8_t { kTdi, kTdo, kMask, kSmask };
constexpr size_t kFields = 4;

// "TDI".
std::string_view Name(Field field);

// SIR, SDR, HIR, TIR, HDR, TDR: a length and up to four fields.
struct ScanStatement {
  struct FieldText {
    size_t offset = 0;  // of the field's name
    HexText data;
  };

  Register which = Register::kSir;
  uint32_t bits = 0;
  size_t bits_offset = 0;
  std::array<std::optional<FieldText>, kFields> fields;

  const std::optional<FieldText> &field(Field name) const {
    return fields[static_cast<size_t>(name)];
  }
};

// ENDIR, ENDDR: where later scans end.
struct EndStatement {
  bool instruction = false;  // ENDIR
  TapState state = TapState::kIdle;
  size_t state_offset = 0;
};

// STATE: a state, or a path to it; the last is stable.
struct StateStatement {
  struct Step {
    TapState state;
    size_t offset;
  };
  std::vector<Step> path;  // at least one
};

// RUNTEST. A count or a minimum time is there, or both.
struct RunTestStatement {
  struct Place {
    TapState state;
    size_t offset;
  };
  struct Time {
    Decimal seconds;
    size_t offset = 0;
  };
  struct Count {
    uint32_t clocks = 0;
    bool system_clock = false;  // SCK
    size_t offset = 0;
  };

  std::optional<Place> run;
  std::optional<Count> count;
  std::optional<Time> minimum;
  std::optional<Time> maximum;
  std::optional<Place> end;
};

// FREQUENCY; without a number back to full speed.
struct FrequencyStatement {
  std::optional<Decimal> hertz;
  size_t hertz_offset = 0;
};

// TRST.
struct TrstStatement {
  enum class Mode : uint8_t { kOn, kOff, kZ, kAbsent };
  Mode mode = Mode::kZ;
};

// PIO and PIOMAP; their contents are not looked at.
struct ParallelStatement {};

struct Statement {
  size_t offset = 0;      // of its first word
  std::string_view name;  // that word as it stands in the file
  std::variant<ScanStatement, EndStatement, StateStatement, RunTestStatement, FrequencyStatement,
               TrstStatement, ParallelStatement>
      what;
};

}  // namespace svf
