// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Every prefix of good files. The image ends where readable memory ends.
#include <set>

#include "image.h"
#include "session.h"
#include "sweep.h"

namespace {

using bench::Bytes;
using bench::Lines;
using sweep::Subject;

constexpr size_t kHeader = 16;  // of the writer's files

class SweepTruncation : public shim::Test, public ::testing::WithParamInterface<bool> {
 protected:
  SweepTruncation() : subject_(GetParam()) {
    AllowLeaks(shim::kAnyLeaks);
    const std::vector<size_t> ends = sweep::Boundaries(subject_.file(), kHeader);
    whole_.insert(ends.begin(), ends.end());
    for (size_t i = 0; i + 1 < ends.size(); ++i) {
      AddOtherEnds(ends[i], ends[i + 1]);
    }
  }

  // A reserved record may end anywhere behind its opcode, for it is only skipped; a run-test may
  // end with any of its fields, for the byte behind them is only looked at.
  void AddOtherEnds(size_t begin, size_t end) {
    const Bytes &file = subject_.file();
    size_t at = begin + 1;
    while (file[at++] & 0x80) {
    }
    const uint8_t opcode = file[at++];
    if (opcode == 1 || opcode == 5 || opcode == 6 || opcode == 19) {
      for (; at < end; ++at) {
        others_.insert(at);
      }
    } else if (opcode == image::kRunTest && file[at] == 1) {
      AddFieldEnds(at + 1, end);
    }
  }

  void AddFieldEnds(size_t at, size_t end) {
    while (at + 1 < end) {
      at++;
      while (at < end && subject_.file()[at++] & 0x80) {
      }
      others_.insert(at);
    }
  }

  Bytes Prefix(size_t length) const {
    return Bytes(subject_.file().begin(), subject_.file().begin() + static_cast<long>(length));
  }

  // Downloads a prefix into a module that has just been loaded.
  s32 Download(size_t length) {
    shim::Reset();
    return subject_.bench().Download(Prefix(length));
  }

  // The code that the download ended with, as its last message has it.
  static void ExpectCode(s32 code) {
    EXPECT_EQ(shim::Messages().back(), session::Ended(code));
  }

  Subject subject_;
  std::set<size_t> whole_;   // lengths that end with a record
  std::set<size_t> others_;  // other lengths that are a success
};

TEST_P(SweepTruncation, OnlyWholeRecordsAreASuccess) {
  EXPECT_EQ(*whole_.rbegin(), subject_.file().size());
  EXPECT_GE(others_.size(), 10u);
  for (size_t length = 1; length <= subject_.file().size(); ++length) {
    SCOPED_TRACE("length " + std::to_string(length));
    const s32 rc = Download(length);
    const Lines scans = subject_.bench().Scans();
    EXPECT_TRUE(sweep::IsBeginning(scans, subject_.scans()) || length < kHeader + 10)
        << "the opening record's prefixes tell other places";
    if (length < kHeader) {
      EXPECT_EQ(rc, 0);
      ExpectCode(-7);
      EXPECT_TRUE(scans.empty());
    } else if (whole_.count(length) != 0 || others_.count(length) != 0) {
      EXPECT_EQ(rc, 1);
      ExpectCode(0);
      EXPECT_FALSE(bench::Said(session::Cut()));
    } else {
      EXPECT_EQ(rc, 0);
      ExpectCode(-10);
      EXPECT_TRUE(bench::Said(session::Cut()));
      EXPECT_FALSE(bench::Said(session::BadTag()));
      EXPECT_FALSE(bench::Said(session::UnknownOpcode()));
    }
    cleanup_module();
    EXPECT_LE(shim::LiveRequests(), 1u) << "the block that told the place";
    if (HasFailure()) {
      return;
    }
  }
}

TEST_P(SweepTruncation, NextGoodDownloadSucceeds) {
  for (size_t length = 1; length <= subject_.file().size(); ++length) {
    SCOPED_TRACE("length " + std::to_string(length));
    Download(length);
    subject_.Renew();
    ASSERT_EQ(subject_.bench().Download(subject_.file()), 1);
    ASSERT_TRUE(subject_.Programmed());
  }
}

INSTANTIATE_TEST_SUITE_P(Files, SweepTruncation, ::testing::Bool(),
                         [](const auto &info) { return info.param ? "Plain" : "Encoded"; });

}  // namespace
