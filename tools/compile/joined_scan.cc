// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/joined_scan.h"

#include <initializer_list>

namespace tool {
namespace {

// Concatenates bits in the order of register bytes.
class BitQueue {
 public:
  explicit BitQueue(svf::RegisterBytes &bytes) : bytes_(bytes) {
    bytes_.clear();
  }

  // Appends the first `bits` bits of `more`; the unused bits of its last byte are 0.
  void Append(const svf::RegisterBytes &more, uint32_t bits) {
    const unsigned used = bits_ % 8;
    if (used == 0) {
      bytes_.insert(bytes_.end(), more.begin(), more.end());
    } else {
      for (uint8_t byte : more) {
        bytes_.back() |= static_cast<uint8_t>(byte >> used);
        bytes_.push_back(static_cast<uint8_t>(byte << (8 - used)));
      }
    }
    Grow(bits);
  }

  void AppendZeros(uint32_t bits) {
    Grow(bits);
  }

 private:
  void Grow(uint32_t bits) {
    bits_ += bits;
    bytes_.resize((bits_ + 7) / 8);
  }

  svf::RegisterBytes &bytes_;
  uint64_t bits_ = 0;
};

tvb::Shift WithoutPads(const svf::ScanRegister &scan) {
  tvb::Shift joined;
  joined.bits = scan.bits();
  joined.tdi = scan.tdi();
  if (scan.has_free_bits()) {
    joined.care = scan.smask();
  }
  if (scan.compares()) {
    joined.tdo = scan.tdo();
    joined.mask = scan.mask();
  }
  return joined;
}

}  // namespace

tvb::Shift ScanJoiner::Join(const svf::ScanRegister &header, const svf::ScanRegister &scan,
                            const svf::ScanRegister &trailer) {
  if (header.bits() == 0 && trailer.bits() == 0) {
    return WithoutPads(scan);
  }
  tvb::Shift joined;
  joined.bits = header.bits() + scan.bits() + trailer.bits();
  BitQueue tdi(tdi_);
  BitQueue smask(smask_);
  bool has_free_bits = false;
  for (const svf::ScanRegister *part : {&header, &scan, &trailer}) {
    tdi.Append(part->tdi(), part->bits());
    smask.Append(part->smask(), part->bits());
    has_free_bits |= part->bits() > 0 && part->has_free_bits();
  }
  joined.tdi = tdi_;
  if (has_free_bits) {
    joined.care = smask_;
  }
  if (scan.compares() && scan.bits() > 0) {
    BitQueue tdo(tdo_);
    BitQueue mask(mask_);
    tdo.AppendZeros(header.bits());
    mask.AppendZeros(header.bits());
    tdo.Append(scan.tdo(), scan.bits());
    mask.Append(scan.mask(), scan.bits());
    tdo.AppendZeros(trailer.bits());
    mask.AppendZeros(trailer.bits());
    joined.tdo = tdo_;
    joined.mask = mask_;
  }
  return joined;
}

}  // namespace tool
