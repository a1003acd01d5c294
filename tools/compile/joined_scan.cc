// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/joined_scan.h"

#include <utility>

namespace tool {
namespace {

tvb::Shift Uncopied(const svf::ScanRegister &scan) {
  tvb::Shift joined;
  joined.bits = scan.bits();
  joined.tdi = scan.tdi();
  if (scan.has_free_bits()) {
    joined.care = scan.smask();
  }
  if (scan.compares()) {
    joined.tdo = scan.tdo();
    joined.mask = scan.mask();
    joined.free_tdo = true;
  }
  return joined;
}

}  // namespace

void BitQueue::Append(tvb::Bytes more, uint32_t bits) {
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

void BitQueue::AppendZeros(uint32_t bits) {
  Grow(bits);
}

void BitQueue::Clear() {
  bytes_.clear();
  bits_ = 0;
}

void BitQueue::Grow(uint32_t bits) {
  bits_ += bits;
  bytes_.resize((bits_ + 7) / 8);
}

void ScanJoiner::Add(const svf::ScanRegister &header, const svf::ScanRegister &scan,
                     const svf::ScanRegister &trailer) {
  if (bits_ == 0 && header.bits() == 0 && trailer.bits() == 0) {
    only_ = &scan;
    bits_ = scan.bits();
    return;
  }
  for (const svf::ScanRegister *part : {&header, &scan, &trailer}) {
    Append(*part);
  }
}

void ScanJoiner::Keep() {
  if (only_ != nullptr) {
    bits_ = 0;
    Append(*std::exchange(only_, nullptr));
  }
}

tvb::Shift ScanJoiner::Scan() const {
  if (only_ != nullptr) {
    return Uncopied(*only_);
  }
  tvb::Shift joined;
  joined.bits = bits_;
  joined.tdi = tdi_.bytes();
  if (has_free_bits_) {
    joined.care = smask_.bytes();
  }
  if (compares_) {
    joined.tdo = tdo_.bytes();
    joined.mask = mask_.bytes();
    joined.free_tdo = true;
  }
  return joined;
}

void ScanJoiner::Clear() {
  for (BitQueue *queue : {&tdi_, &smask_, &tdo_, &mask_}) {
    queue->Clear();
  }
  only_ = nullptr;
  bits_ = 0;
  has_free_bits_ = false;
  compares_ = false;
}

void ScanJoiner::Append(const svf::ScanRegister &part) {
  const uint32_t bits = part.bits();
  if (bits == 0) {
    return;
  }
  bits_ += bits;
  tdi_.Append(part.tdi(), bits);
  smask_.Append(part.smask(), bits);
  has_free_bits_ |= part.has_free_bits();
  if (part.compares()) {
    tdo_.Append(part.tdo(), bits);
    mask_.Append(part.mask(), bits);
  } else {
    tdo_.AppendZeros(bits);
    mask_.AppendZeros(bits);
  }
  compares_ |= part.compares();
}

}  // namespace tool
