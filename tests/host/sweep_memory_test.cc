// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Every allocation of a whole download fails once, alone or with all that follow it.
#include "session.h"
#include "sweep.h"

namespace {

using bench::Lines;
using sweep::Subject;

// Plain or encoded blocks; one failure, or one and all after it.
class SweepMemory : public shim::Test,
                    public ::testing::WithParamInterface<std::tuple<bool, bool>> {
 protected:
  SweepMemory() : subject_(std::get<0>(GetParam())) {
    AllowLeaks(shim::kAnyLeaks);  // accounted for at every step
  }

  void Fail(uint64_t n) {
    std::get<1>(GetParam()) ? shim::FailAllocationsFrom(n) : shim::FailAllocation(n);
  }

  // A fresh module and a fresh target; the n-th allocation of the download fails. Returns whether
  // there was one.
  bool DownloadWithout(uint64_t n) {
    shim::Reset();
    subject_.Renew();
    Fail(n);
    rc_ = subject_.bench().Download(subject_.file());
    shim::FailAllocation(0);
    return shim::Allocations().size() >= n;
  }

  // What the records caused, with or without an IDCODE read before them.
  void ExpectHonest() {
    const Lines all = subject_.bench().Scans();
    const Lines expected = subject_.RecordScans();
    if (rc_ == 1) {
      EXPECT_EQ(bench::Tail(all, expected.size()), expected);
      EXPECT_LE(all.size(), subject_.scans().size());
      EXPECT_TRUE(subject_.Programmed());
      const uint64_t reads = subject_.bench().pins().reads();
      EXPECT_TRUE(reads == reads_ || reads + 32 == reads_) << "verified " << reads;
      return;
    }
    EXPECT_EQ(rc_, 0);
    EXPECT_TRUE(shim::Messages().back() == session::Ended(-2) ||
                shim::Messages().back() == session::Ended(-10));
    EXPECT_FALSE(bench::Said(session::VerifyFailed()));
    bool beginning = false;
    for (size_t prescan = 0; prescan <= std::min(all.size(), script::Script::kPrescan); ++prescan) {
      beginning |= sweep::IsBeginning(bench::Tail(all, all.size() - prescan), expected);
    }
    EXPECT_TRUE(beginning) << ::testing::PrintToString(all);
  }

  // Unloads, and compares what is left with what is lost by design: the block that told the place,
  // a pattern that could not be doubled, the blocks of a record with a bad tag.
  void ExpectOnlyKnownLeaks(size_t idcodes) {
    const bool place = !bench::Said(shim::Printk("nibble decode: realloc fail"));
    cleanup_module();
    size_t most = 1 + idcodes;
    if (!place) {
      most += 1;
    }
    if (bench::Said(session::BadTag())) {
      most += 3;
    }
    EXPECT_LE(shim::LiveRequests(), most);
  }

  Subject subject_;
  s32 rc_ = 0;
  uint64_t reads_ = 0;
};

TEST_P(SweepMemory, NoAllocationThatFailsIsSurvivedInSilence) {
  EXPECT_FALSE(DownloadWithout(1000000));
  EXPECT_EQ(rc_, 1);
  EXPECT_EQ(subject_.bench().Scans(), subject_.scans());
  EXPECT_TRUE(subject_.Programmed());
  reads_ = subject_.bench().pins().reads();
  const size_t requests = shim::Allocations().size();

  size_t refused = 0;
  uint64_t n = 1;
  for (; DownloadWithout(n); ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    ExpectHonest();
    refused += rc_ == 0;
    ExpectOnlyKnownLeaks(0);
    if (HasFailure()) {
      return;
    }
  }
  EXPECT_EQ(rc_, 1);
  EXPECT_EQ(n, requests + 1);
  // The eight of the IDCODE read stop nothing by themselves.
  EXPECT_EQ(refused, std::get<1>(GetParam()) ? requests : requests - 8);
}

TEST_P(SweepMemory, NextGoodDownloadSucceeds) {
  for (uint64_t n = 1; DownloadWithout(n); ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    EXPECT_EQ(subject_.bench().Download(subject_.file()), 1);
    EXPECT_TRUE(subject_.Programmed());
    const Lines expected = subject_.RecordScans();
    // Pads that a stopped file left are in force up to the records that replace them.
    EXPECT_EQ(bench::Tail(subject_.bench().Scans(), expected.size() - 1),
              bench::Tail(expected, expected.size() - 1));
    if (HasFailure()) {
      return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Files, SweepMemory,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool()),
                         [](const auto &info) {
                           return std::string(std::get<0>(info.param) ? "Plain" : "Encoded") +
                                  (std::get<1>(info.param) ? "AllFrom" : "One");
                         });

// With plain blocks nothing is misread after a failure: what is left is known to the block.
TEST(SweepMemoryExactly, PlainFileLosesTheBlockThatToldThePlaceAlone) {
  shim::Reset();
  Subject subject(true);
  for (uint64_t n = 1;; ++n) {
    shim::Reset();
    subject.Renew();
    shim::FailAllocation(n);
    subject.bench().Download(subject.file());
    shim::FailAllocation(0);
    if (shim::Allocations().size() < n) {
      break;
    }
    // The first is the vector, the second the block of the opening record.
    EXPECT_EQ(shim::Allocations()[1].size, 4u);
    const bool kept = shim::Allocations()[1].pointer != nullptr;
    cleanup_module();
    ASSERT_EQ(shim::LiveRequests(), kept ? 1u : 0u) << "allocation " << n;
  }
  shim::Reset();
}

}  // namespace
