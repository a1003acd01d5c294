// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Folds repeated records into loops.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "tvb/bytes.h"

namespace tool {

// Takes records and passes them on, with runs of equal stretches replaced by a loop where that is
// smaller. A loop holds up to kMaxBody records; loops do not nest, so of loops that overlap
// those are taken that save most. What comes out depends on the records alone, not on how fast they
// come. Records are looked at through a window: memory is about three times kWindowBytes, or what
// one loop's body takes if that is more.
class RecordFolder {
 public:
  static constexpr size_t kMaxBody = 64;  // records
  static constexpr size_t kWindowRecords = 2048;
  static constexpr size_t kWindowBytes = 1 << 22;

  // Gets whole records, one or several at a time; the bytes are good during the call.
  using Sink = std::function<void(tvb::Bytes records)>;

  explicit RecordFolder(Sink sink) : sink_(std::move(sink)) {}

  // One whole record.
  void Put(tvb::Bytes record);

  // Passes on all that is held back. A loop does not go across this.
  void Flush();

  // What has been passed on: records, those of loops and their ends included, and loops.
  uint64_t records() const {
    return records_;
  }
  uint64_t loops() const {
    return loops_;
  }

 private:
  // What to do with the records from one entry on: pass one on (copies 1), or fold.
  struct Choice {
    uint32_t period = 1;
    uint32_t copies = 1;
  };

  // A loop that may still go on.
  struct OpenLoop {
    tvb::Buffer body;
    std::vector<size_t> starts;  // of its records, and the end of the last
    uint64_t copies = 0;
    size_t matched = 0;  // records of the next copy that have come
  };

  size_t size() const {
    return starts_.size();
  }
  size_t Start(size_t entry) const;
  tvb::Bytes Stretch(size_t entry, size_t count) const;
  bool IsFull() const;
  void Append(tvb::Bytes record);
  std::vector<Choice> Choose() const;
  void PassOn(size_t limit);
  bool IsRepeated(size_t entry, const Choice &choice) const;
  void PassOnLoop(tvb::Bytes body, size_t body_records, uint64_t copies);
  void OpenLoopAt(size_t entry, const Choice &choice);
  bool GoOnWithLoop(tvb::Bytes record);
  void CloseLoop();
  void Drop(size_t count);

  Sink sink_;
  // The window: its records, where each begins, and a hash of each that is not 0.
  tvb::Buffer bytes_;
  std::vector<size_t> starts_;
  std::vector<uint32_t> hashes_;

  OpenLoop loop_;  // copies 0: none
  uint64_t records_ = 0;
  uint64_t loops_ = 0;
};

}  // namespace tool
