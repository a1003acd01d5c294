// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/record_folder.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tvb/hash.h"
#include "tvb/number.h"
#include "tvb/record.h"

namespace tool {
namespace {

tvb::Buffer LoopRecord(uint64_t copies) {
  tvb::Buffer record;
  tvb::AppendRecord(record, tvb::kLoop, tvb::NumberBody(static_cast<uint32_t>(copies)));
  return record;
}

tvb::Buffer EndRecord() {
  tvb::Buffer record;
  tvb::AppendRecord(record, tvb::kEndLoop, {});
  return record;
}

// The size of the two records around a loop's body: mark, length and opcode each, and the count.
size_t LoopOverhead(uint64_t copies) {
  return 2 * 3 + tvb::NumberSize(static_cast<uint32_t>(copies));
}

// For each period, the number of consecutive records from one entry on that equal the record one
// period later.
using EqualRuns = std::array<uint32_t, RecordFolder::kMaxBody>;  // period 1 first

// Steps from the following entry back to this one; `hashes` starts with this one's hash. True if a
// whole period repeats here. Written so that the compiler vectorizes it over the periods.
bool GoBack(const uint32_t *hashes, EqualRuns &runs) {
  uint32_t repeats = 0;
  for (size_t i = 0; i < RecordFolder::kMaxBody; ++i) {
    const uint32_t all_if_equal = hashes[0] == hashes[i + 1] ? ~0u : 0;
    runs[i] = (runs[i] + 1) & all_if_equal;
    repeats |= runs[i] > i ? ~0u : 0;
  }
  return repeats != 0;
}

// Tells entries, taken from the window's end to its start, that have no equal within kMaxBody after
// them. It knows the last entry of each group of hashes, so it may take one for repeated that is
// not.
class Neighbours {
 public:
  explicit Neighbours(size_t entries) : last_(kGroups, entries + RecordFolder::kMaxBody) {}

  bool MayHaveEqual(size_t entry, uint32_t hash) {
    return std::exchange(last_[hash / 2 % kGroups], entry) <= entry + RecordFolder::kMaxBody;
  }

 private:
  static constexpr size_t kGroups = 1 << 12;

  std::vector<size_t> last_;
};

bool Equal(tvb::Bytes one, tvb::Bytes other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end());
}

}  // namespace

void RecordFolder::Put(tvb::Bytes record) {
  if (loop_.copies > 0) {
    if (GoOnWithLoop(record)) {
      return;
    }
    CloseLoop();
  }
  Append(record);
  if (IsFull()) {
    // Loops that begin near the end are better judged when more of their records are here.
    constexpr size_t kHeldBack = 4 * kMaxBody;
    PassOn(std::max(size() / 2, size() - std::min(kHeldBack, size())));
  }
}

void RecordFolder::Flush() {
  while (loop_.copies > 0 || size() > 0) {
    if (loop_.copies > 0) {
      CloseLoop();
    }
    PassOn(size());
  }
}

size_t RecordFolder::Start(size_t entry) const {
  return entry < size() ? starts_[entry] : bytes_.size();
}

tvb::Bytes RecordFolder::Stretch(size_t entry, size_t count) const {
  return {bytes_.data() + Start(entry), Start(entry + count) - Start(entry)};
}

bool RecordFolder::IsFull() const {
  return size() >= kWindowRecords || (bytes_.size() >= kWindowBytes && size() > 1);
}

void RecordFolder::Append(tvb::Bytes record) {
  starts_.push_back(bytes_.size());
  hashes_.push_back(static_cast<uint32_t>(tvb::Hash(record)) | 1);
  tvb::Append(bytes_, record);
}

// From the window's end to its start: the minimum size of the records from each entry on, and the
// step to take at that entry for it. A repeated stretch is folded with all its copies.
std::vector<RecordFolder::Choice> RecordFolder::Choose() const {
  std::vector<Choice> choices(size());
  std::vector<uint64_t> cost(size() + 1);
  std::vector<uint32_t> hashes = hashes_;
  hashes.resize(size() + kMaxBody);  // padded with 0, the hash of no record
  Neighbours neighbours(size());
  EqualRuns equal{};
  bool any_equal = false;
  for (size_t entry = size(); entry-- > 0;) {
    cost[entry] = cost[entry + 1] + Start(entry + 1) - Start(entry);
    if (!neighbours.MayHaveEqual(entry, hashes[entry])) {
      if (std::exchange(any_equal, false)) {
        equal.fill(0);
      }
      continue;
    }
    any_equal = true;
    if (!GoBack(&hashes[entry], equal)) {
      continue;
    }
    for (uint32_t period = 1; period <= kMaxBody; ++period) {
      const uint32_t copies = equal[period - 1] / period + 1;
      if (copies == 1) {
        continue;
      }
      const uint64_t folded = Stretch(entry, period).size() + LoopOverhead(copies) +
                              cost[entry + static_cast<size_t>(period) * copies];
      if (folded < cost[entry]) {
        cost[entry] = folded;
        choices[entry] = {period, copies};
      }
    }
  }
  return choices;
}

// Passes on the records before entry `limit`, and any loop that begins there. A loop that reaches
// the window's end may continue after it: that one is opened.
void RecordFolder::PassOn(size_t limit) {
  const std::vector<Choice> choices = Choose();
  size_t done = 0;
  size_t entry = 0;
  while (entry < limit) {
    const Choice &choice = choices[entry];
    const size_t next = entry + static_cast<size_t>(choice.period) * choice.copies;
    if (choice.copies == 1 || !IsRepeated(entry, choice)) {
      ++entry;
      continue;
    }
    PassOnRecords(done, entry);
    if (next + choice.period > size()) {
      OpenLoopAt(entry, choice);
      return;
    }
    PassOnLoop(Stretch(entry, choice.period), choice.period, choice.copies);
    entry = done = next;
  }
  PassOnRecords(done, entry);
  Drop(entry);
}

void RecordFolder::PassOnRecords(size_t first, size_t end) {
  if (first < end) {
    sink_(Stretch(first, end - first));
    records_ += end - first;
  }
}

// Different records may have equal hashes.
bool RecordFolder::IsRepeated(size_t entry, const Choice &choice) const {
  const tvb::Bytes body = Stretch(entry, choice.period);
  for (size_t copy = 1; copy < choice.copies; ++copy) {
    if (!Equal(body, Stretch(entry + copy * choice.period, choice.period))) {
      return false;
    }
  }
  return true;
}

void RecordFolder::PassOnLoop(tvb::Bytes body, size_t body_records, uint64_t copies) {
  sink_(LoopRecord(copies));
  sink_(body);
  sink_(EndRecord());
  records_ += body_records + 2;
  ++loops_;
}

void RecordFolder::OpenLoopAt(size_t entry, const Choice &choice) {
  const tvb::Bytes body = Stretch(entry, choice.period);
  loop_.body.assign(body.begin(), body.end());
  loop_.starts.clear();
  for (size_t i = 0; i <= choice.period; ++i) {
    loop_.starts.push_back(Start(entry + i) - Start(entry));
  }
  loop_.copies = choice.copies;
  loop_.matched = 0;
  Drop(entry + static_cast<size_t>(choice.period) * choice.copies);

  // Fewer records are left than the body has.
  const tvb::Buffer rest = std::exchange(bytes_, {});
  std::vector<size_t> starts = std::exchange(starts_, {});
  hashes_.clear();
  starts.push_back(rest.size());
  for (size_t i = 0; i + 1 < starts.size(); ++i) {
    Put({rest.data() + starts[i], starts[i + 1] - starts[i]});
  }
}

// True if the record is the next one of the open loop.
bool RecordFolder::GoOnWithLoop(tvb::Bytes record) {
  const size_t start = loop_.starts[loop_.matched];
  const size_t end = loop_.starts[loop_.matched + 1];
  if (!Equal(record, {loop_.body.data() + start, end - start}) || loop_.copies == tvb::kMaxNumber) {
    return false;
  }
  if (++loop_.matched == loop_.starts.size() - 1) {
    loop_.matched = 0;
    ++loop_.copies;
  }
  return true;
}

// Passes the loop on; an incomplete further copy goes back into the window.
void RecordFolder::CloseLoop() {
  const OpenLoop loop = std::exchange(loop_, {});
  PassOnLoop(loop.body, loop.starts.size() - 1, loop.copies);
  for (size_t i = 0; i < loop.matched; ++i) {
    Append({loop.body.data() + loop.starts[i], loop.starts[i + 1] - loop.starts[i]});
  }
}

void RecordFolder::Drop(size_t count) {
  const size_t bytes = Start(count);
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<ptrdiff_t>(bytes));
  starts_.erase(starts_.begin(), starts_.begin() + static_cast<ptrdiff_t>(count));
  hashes_.erase(hashes_.begin(), hashes_.begin() + static_cast<ptrdiff_t>(count));
  for (size_t &start : starts_) {
    start -= bytes;
  }
}

}  // namespace tool
