// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What carries over from one scan to the next.
#pragma once

#include <cstdint>
#include <vector>

#include "svf/parser.h"

namespace svf {

// Register data: register bit d, where d = 0 is shifted first, is bit 7 - (d mod 8) of byte d / 8.
// Unused bits of the last byte are 0.
using RegisterBytes = std::vector<uint8_t>;

// One of the six registers that statements give data for, with what carries over: TDI, MASK and
// SMASK, as long as the length stays the same. MASK and SMASK are all ones until given, and again
// when the length changes. TDO applies to its own statement only.
class ScanRegister {
 public:
  // Applies a statement for this register. Throws Error for data that does not fit its length, and
  // for a new length above 0 without TDI. Uses about bits / 2 bytes of memory; a caller that cannot
  // use a long scan should reject it first.
  void Load(const ScanStatement &scan);

  uint32_t bits() const {
    return bits_;
  }
  const RegisterBytes &tdi() const {
    return tdi_;
  }

  // True if the last statement gave a TDO, which is compared under the mask.
  bool compares() const {
    return compares_;
  }
  const RegisterBytes &tdo() const {
    return tdo_;
  }
  const RegisterBytes &mask() const {
    return mask_.bytes;
  }

  // True if some TDI bits are don't-care: those with a 0 in smask().
  bool has_free_bits() const {
    return !smask_.all_ones;
  }
  const RegisterBytes &smask() const {
    return smask_.bytes;
  }

 private:
  struct Mask {
    RegisterBytes bytes;
    bool all_ones = true;
  };

  void LoadMask(const ScanStatement &scan, Field field, bool new_length, Mask &mask) const;

  uint32_t bits_ = 0;
  RegisterBytes tdi_;
  RegisterBytes tdo_;
  Mask mask_;
  Mask smask_;
  bool compares_ = false;
};

}  // namespace svf
