// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Where the decoders of data blocks put what they produce.
#pragma once

#include <algorithm>
#include <cstdint>

#include "tvb/bytes.h"

namespace tvb {

// Counts the bytes of a block and keeps the first `count` of them, if there is a place to keep
// them.
class Decoded {
 public:
  // `out`: gets the bytes at its end; null: they are only counted. It must outlive this object.
  explicit Decoded(uint64_t count, Buffer *out = nullptr) : count_(count), out_(out) {}

  bool keeps() const {
    return out_ != nullptr;
  }
  bool full() const {
    return total_ >= count_;
  }
  uint64_t room() const {
    return full() ? 0 : count_ - total_;
  }

  // `times` copies of one byte.
  void Put(uint8_t byte, uint64_t times = 1) {
    if (out_) {
      out_->insert(out_->end(), static_cast<size_t>(std::min(times, room())), byte);
    }
    total_ += times;
  }

  // All of `bytes`, or as much of them as is kept.
  void Put(Bytes bytes) {
    if (out_) {
      size_t kept = static_cast<size_t>(std::min<uint64_t>(bytes.size(), room()));
      out_->insert(out_->end(), bytes.begin(), bytes.begin() + kept);
    }
    total_ += bytes.size();
  }

  // `size` bytes of which nobody wants to know the values.
  void Skip(uint64_t size) {
    total_ += size;
  }

  uint64_t count() const {
    return count_;
  }
  uint64_t written() const {
    return std::min(total_, count_);
  }
  uint64_t surplus() const {
    return total_ - written();
  }

 private:
  uint64_t count_;
  uint64_t total_ = 0;
  Buffer *out_;
};

}  // namespace tvb
