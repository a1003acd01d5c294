// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Whether a file makes sure of the target before it changes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tvb/bytes.h"
#include "tvb/record.h"

namespace tvb {

// The IDCODEs of 2,048 devices. A longer scan compares none, so nobody need unpack its data: a few
// bytes of a file can be many megabytes of it.
constexpr uint32_t kMaxIdentityBits = 65536;

// Looks for what may be an erase or a program before the first comparison of an IDCODE: a scan
// followed by a wait, or a second instruction. BYPASS and the player's own query of a chain are
// harmless, and so is an instruction with its waits if the scan after it compares the IDCODE. The
// functions are called in play order; once it is settled() they do nothing.
class IdentityCheck {
 public:
  // Where a scan is, for the caller.
  struct Place {
    uint64_t offset = 0;
    uint64_t record = 0;
  };
  struct Risk {
    Place scan;
    std::string message;
  };

  // A scan: opcode kSir or kSdr. One of more than kMaxIdentityBits may come without its data, and
  // an SDR without its TDI.
  std::optional<Risk> Scan(const Place &place, Opcode opcode, const Shift &scan);

  // Clocks in Run-Test/Idle.
  std::optional<Risk> Wait();

  // The end of the file.
  std::optional<Risk> End();

  // Nothing more will be found: an IDCODE was compared, or a risk was returned.
  bool settled() const {
    return settled_;
  }

 private:
  std::optional<Risk> Found(const Place &scan, const char *what);

  bool settled_ = false;
  std::optional<Buffer> instruction_;  // the only one so far
  std::optional<Place> last_;          // the last scan, unless it was harmless
  bool instructed_ = false;            // it loaded an instruction
  bool waited_ = false;                // and a wait followed
};

// True if a data scan compares what can be an IDCODE: 16 bits or more of 32 in a row, of which the
// first is 1 in every IDCODE (IEEE 1149.1), and not all expected to be 1.
bool ComparesIdcode(const Shift &scan);

// The warning for an instruction scan of `bits` bits, no multiple of kInstructionBits: in every
// download the player reads the IDCODE by an instruction of its own.
std::string InstructionLengthRisk(uint32_t bits);

}  // namespace tvb
