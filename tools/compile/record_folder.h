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

// Takes records and passes them on, replacing runs of equal stretches by a loop where that is
// smaller. A loop holds up to kMaxBody records. Loops do not nest; of overlapping loops those that
// save most are chosen. The output depends on the records alone, not on how fast they
// arrive. Records are examined in a window: memory is about three times kWindowBytes, or the size
// of one loop's body if that is more.
class RecordFolder {
 public:
  static constexpr size_t kMaxBody = 64;  // records
  static constexpr size_t kWindowRecords = 2048;
  static constexpr size_t kWindowBytes = 1 << 22;

  // Receives whole records, one or several at a time; the bytes are valid during the call.
  using Sink = std::function<void(tvb::Bytes records)>;

  explicit RecordFolder(Sink sink) : sink_(std::move(sink)) {}

  // Takes one whole record.
  void Put(tvb::Bytes record);

  // Passes on all buffered records. No loop extends across a flush.
  void Flush();

  // The totals passed on: records, including those of loops and loop ends, and loops.
  uint64_t records() const {
    return records_;
  }
  uint64_t loops() const {
    return loops_;
  }

 private:
  // The step at one entry: pass one record on (copies 1), or fold.
  struct Choice {
    uint32_t period = 1;
    uint32_t copies = 1;
  };

  // A loop that may continue.
  struct OpenLoop {
    tvb::Buffer body;
    std::vector<size_t> starts;  // of its records, and the end of the last
    uint64_t copies = 0;
    size_t matched = 0;  // records of the next copy received so far
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
  void PassOnRecords(size_t first, size_t end);
  bool IsRepeated(size_t entry, const Choice &choice) const;
  void PassOnLoop(tvb::Bytes body, size_t body_records, uint64_t copies);
  void OpenLoopAt(size_t entry, const Choice &choice);
  bool GoOnWithLoop(tvb::Bytes record);
  void CloseLoop();
  void Drop(size_t count);

  Sink sink_;
  // The window: its records, the start of each, and a nonzero hash of each.
  tvb::Buffer bytes_;
  std::vector<size_t> starts_;
  std::vector<uint32_t> hashes_;

  OpenLoop loop_;  // copies 0: none
  uint64_t records_ = 0;
  uint64_t loops_ = 0;
};

}  // namespace tool
