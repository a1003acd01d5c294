// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Folding records into loops.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tools/compile/record_folder.h"
#include "tvb/reader.h"
#include "tvb/record.h"
#include "tvb/writer.h"

namespace {

using RecordList = std::vector<tvb::Buffer>;

// A reserved record of `size` bytes of body that say which it is.
tvb::Buffer Record(uint32_t which, size_t size = 8) {
  tvb::Buffer body(size);
  for (size_t i = 0; i < size; ++i) {
    body[i] = static_cast<uint8_t>(which >> 8 * (i % 4));
  }
  tvb::Buffer record;
  tvb::AppendRecord(record, tvb::kReserved1, body);
  return record;
}

size_t Size(const RecordList &records) {
  size_t size = 0;
  for (const tvb::Buffer &record : records) {
    size += record.size();
  }
  return size;
}

struct Folded {
  explicit Folded(const RecordList &records)
      : folder([this](tvb::Bytes bytes) { out.insert(out.end(), bytes.begin(), bytes.end()); }) {
    for (const tvb::Buffer &record : records) {
      folder.Put(record);
    }
    folder.Flush();
  }

  // The records as they are played, loops written out; at most so many.
  RecordList Unfolded(size_t most = 1u << 30) const {
    tvb::Buffer image = tvb::Writer().Take();
    const size_t start = image.size();
    image.insert(image.end(), out.begin(), out.end());
    RecordList played;
    uint64_t begin = 0;
    uint32_t passes = 0;
    for (uint64_t at = start; at < image.size() && played.size() < most;) {
      const tvb::RecordView record = tvb::ReadRecord(image, false, at, 0);
      EXPECT_FALSE(record.fault);
      at = record.end;
      if (record.opcode == tvb::kLoop) {
        EXPECT_EQ(begin, 0u) << "loops do not nest";
        EXPECT_GE(record.value->value, 2);
        begin = record.end;
        passes = static_cast<uint32_t>(record.value->value);
      } else if (record.opcode == tvb::kEndLoop) {
        at = --passes > 0 ? begin : record.end;
        begin = passes > 0 ? begin : 0;
      } else {
        played.emplace_back(image.begin() + static_cast<ptrdiff_t>(record.offset),
                            image.begin() + static_cast<ptrdiff_t>(record.end));
      }
    }
    return played;
  }

  tvb::Buffer out;
  tool::RecordFolder folder;
};

RecordList Repeat(const std::string &pattern, size_t times) {
  RecordList records;
  for (size_t i = 0; i < times; ++i) {
    for (char which : pattern) {
      records.push_back(Record(static_cast<uint32_t>(which)));
    }
  }
  return records;
}

TEST(SvfFold, FoldsARun) {
  const RecordList records = Repeat("a", 1000);
  const Folded folded(records);
  EXPECT_EQ(folded.out.size(), 5 + 11 + 3u);
  EXPECT_EQ(folded.folder.records(), 3u);
  EXPECT_EQ(folded.folder.loops(), 1u);
  EXPECT_EQ(folded.Unfolded(), records);
}

TEST(SvfFold, FoldsTheOuterRepeatNotTheInner) {
  const RecordList records = Repeat("aab", 500);
  const Folded folded(records);
  EXPECT_EQ(folded.folder.loops(), 1u);
  EXPECT_EQ(folded.out.size(), 5 + 3 * 11 + 3u);
  EXPECT_EQ(folded.Unfolded(), records);
}

TEST(SvfFold, LeavesWhatALoopWouldNotMakeSmaller) {
  // Seven bytes twice, and seven is what a loop costs.
  const RecordList records = {Record(1, 0), Record(1, 1), Record(1, 0), Record(1, 1)};
  EXPECT_EQ(Size(records), 14u);
  const Folded folded(records);
  EXPECT_EQ(folded.folder.loops(), 0u);
  EXPECT_EQ(folded.Unfolded(), records);
}

TEST(SvfFold, FoldsAsSoonAsItSaves) {
  const RecordList records = {Record(1, 5), Record(1, 5)};
  EXPECT_EQ(Size(records), 16u);
  const Folded folded(records);
  EXPECT_EQ(folded.out.size(), 15u);
  EXPECT_EQ(folded.Unfolded(), records);
}

TEST(SvfFold, TakesBodiesUpToItsLimit) {
  for (size_t period : {tool::RecordFolder::kMaxBody, tool::RecordFolder::kMaxBody + 1}) {
    RecordList records;
    for (uint32_t copy = 0; copy < 40; ++copy) {
      for (uint32_t i = 0; i < period; ++i) {
        records.push_back(Record(i));
      }
    }
    const Folded folded(records);
    EXPECT_EQ(folded.folder.loops(), period <= tool::RecordFolder::kMaxBody ? 1u : 0u);
    EXPECT_EQ(folded.Unfolded(), records);
  }
}

TEST(SvfFold, FollowsALoopFarBeyondItsWindow) {
  const size_t copies = 20 * tool::RecordFolder::kWindowRecords;
  RecordList records = Repeat("abc", copies);
  records.push_back(Record('a'));
  records.push_back(Record('b'));
  records.push_back(Record('x'));
  const Folded folded(records);
  EXPECT_EQ(folded.folder.loops(), 1u);
  EXPECT_EQ(folded.Unfolded(), records);
}

TEST(SvfFold, KeepsRecordsLargerThanItsWindow) {
  const tvb::Buffer large = Record(7, tool::RecordFolder::kWindowBytes + 1);
  const RecordList records = {Record(1), large,     large, Record(2),
                              large,     Record(2), large, Record(2)};
  const Folded folded(records);
  EXPECT_EQ(folded.Unfolded(), records);
  EXPECT_LT(folded.out.size(), Size(records));
}

TEST(SvfFold, FlushEndsALoop) {
  tvb::Buffer out;
  tool::RecordFolder folder([&out](tvb::Bytes bytes) { tvb::Append(out, bytes); });
  for (int half = 0; half < 2; ++half) {
    for (int i = 0; i < 100; ++i) {
      folder.Put(Record(1));
    }
    folder.Flush();
  }
  EXPECT_EQ(folder.loops(), 2u);
}

// Few kinds of records, so that they repeat in every way.
TEST(SvfFold, NeverChangesWhatIsPlayed) {
  std::mt19937 random(1);
  for (int round = 0; round < 150; ++round) {
    RecordList records;
    const uint32_t kinds = 1 + random() % 4;
    const size_t count = random() % (round % 10 == 0 ? 20000 : 300);
    while (records.size() < count) {
      const size_t length = 1 + random() % 80;
      const size_t copies = 1 + random() % 6;
      RecordList stretch;
      for (size_t i = 0; i < length; ++i) {
        stretch.push_back(Record(random() % kinds, random() % 3 * 4));
      }
      for (size_t i = 0; i < copies; ++i) {
        records.insert(records.end(), stretch.begin(), stretch.end());
      }
    }
    const Folded folded(records);
    ASSERT_EQ(folded.Unfolded(), records) << round;
    ASSERT_LE(folded.out.size(), Size(records)) << round;
  }
}

}  // namespace
