// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "svf/scan_register.h"

#include <string>

#include "svf/text.h"

namespace svf {
namespace {

size_t BytesOf(uint32_t bits) {
  return (static_cast<size_t>(bits) + 7) / 8;
}

void FillWithOnes(uint32_t bits, RegisterBytes &bytes) {
  bytes.assign(BytesOf(bits), 0xFF);
  if (bits % 8 != 0) {
    bytes.back() = static_cast<uint8_t>(0xFF00u >> bits % 8);
  }
}

bool IsAllOnes(uint32_t bits, const RegisterBytes &bytes) {
  const uint32_t whole = bits / 8;
  for (uint32_t i = 0; i < whole; ++i) {
    if (bytes[i] != 0xFF) {
      return false;
    }
  }
  return bits % 8 == 0 || bytes[whole] == static_cast<uint8_t>(0xFF00u >> bits % 8);
}

}  // namespace

void ScanRegister::Load(const ScanStatement &scan) {
  const bool new_length = scan.bits != bits_;
  if (const auto &tdi = scan.field(Field::kTdi)) {
    ConvertHex(tdi->data, scan.bits, "TDI", tdi_);
  } else if (new_length && scan.bits > 0) {
    throw Error(scan.bits_offset, "expected TDI: this is the first " +
                                      std::string(Name(scan.which)) + " of " +
                                      std::to_string(scan.bits) +
                                      " bits after another length or none; give it a TDI");
  } else if (new_length) {
    tdi_.clear();
  }
  bits_ = scan.bits;
  const auto &tdo = scan.field(Field::kTdo);
  compares_ = tdo.has_value();
  if (compares_) {
    ConvertHex(tdo->data, bits_, "TDO", tdo_);
  }
  LoadMask(scan, Field::kMask, new_length, mask_);
  LoadMask(scan, Field::kSmask, new_length, smask_);
}

void ScanRegister::LoadMask(const ScanStatement &scan, Field field, bool new_length,
                            Mask &mask) const {
  if (const auto &given = scan.field(field)) {
    ConvertHex(given->data, bits_, field == Field::kMask ? "MASK" : "SMASK", mask.bytes);
    mask.all_ones = IsAllOnes(bits_, mask.bytes);
  } else if (new_length) {
    FillWithOnes(bits_, mask.bytes);
    mask.all_ones = true;
  }
}

}  // namespace svf
