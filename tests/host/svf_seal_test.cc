// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The seal of a compiled file against everything that can happen to one byte of it or to its end.
#include <gtest/gtest.h>

#include <cstdio>

#include "svf_bench.h"
#include "tvb/seal.h"

namespace {

using tvb::Buffer;
using tvb::SealState;

// Shifts, compares, waits and repeats.
constexpr const char *kSvf =
    "FREQUENCY 1E6 HZ; TDR 1 TDI (0); TIR 8 TDI (FF);"
    "SIR 8 TDI (06); SDR 32 TDI (00000000) TDO (0A014C35) MASK (FFFFFFFF);"
    "SIR 8 TDI (30); SDR 64 TDI (0123456789ABCDEF); RUNTEST 50 TCK;"
    "SIR 8 TDI (31); SDR 64 TDI (FEDCBA9876543210); RUNTEST 50 TCK;"
    "SIR 8 TDI (32); SDR 64 TDI (0000000000000000) TDO (FEDCBA9876543210);";

Buffer SealedFile() {
  Buffer file = test::Compiled(kSvf).image;
  tvb::Seal(file);
  return file;
}

bool IsMagic(size_t offset) {
  return offset >= 1 && offset <= 6;
}

TEST(SvfSeal, EveryChangedByteMakesItWrong) {
  Buffer file = SealedFile();
  ASSERT_EQ(tvb::SealOf(file).state, SealState::kRight);
  uint64_t wrong = 0;
  uint64_t unsealed = 0;
  for (size_t at = 0; at < file.size(); ++at) {
    const uint8_t kept = file[at];
    for (uint32_t change = 1; change < 256; ++change) {
      file[at] = static_cast<uint8_t>(kept ^ change);
      const SealState state = tvb::SealOf(file).state;
      ASSERT_EQ(state, IsMagic(at) ? SealState::kNone : SealState::kWrong)
          << "byte " << at << " as " << int{file[at]};
      ++(state == SealState::kWrong ? wrong : unsealed);
    }
    file[at] = kept;
  }
  EXPECT_EQ(wrong, 255 * (file.size() - 6));
  EXPECT_EQ(unsealed, 255u * 6);
  printf("%zu bytes, each with its 255 other values: %ju wrong, %ju in the magic\n", file.size(),
         uintmax_t{wrong}, uintmax_t{unsealed});
}

TEST(SvfSeal, EveryTruncationMakesItWrong) {
  const Buffer file = SealedFile();
  uint64_t wrong = 0;
  for (size_t size = 7; size < file.size(); ++size) {
    ASSERT_EQ(tvb::SealOf(tvb::Bytes(file).first(size)).state, SealState::kWrong)
        << size << " bytes";
    ++wrong;
  }
  EXPECT_EQ(wrong, file.size() - 7);
  printf("%zu bytes: %ju truncations that have the magic, all wrong\n", file.size(),
         uintmax_t{wrong});
}

}  // namespace
