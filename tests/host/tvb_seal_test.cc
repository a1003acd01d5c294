// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The seal: its bytes, and what it says of a file.
#include <gtest/gtest.h>

#include <string_view>

#include "tvb/checker.h"
#include "tvb/seal.h"
#include "tvb/writer.h"
#include "tvb_data.h"

namespace {

using tvb::Buffer;
using tvb::SealState;

// The shortest file: a header and a run-test that does not run.
const Buffer kUnsealed = {'a', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 'b', 0, 'V', 1, '^', 16, 4, 0};
const Buffer kSealed = {'a',  'S', 'E', 'A', 'L', 'E', 'D', 0xAF, 0x2B, 0x57,
                        0x63, 0,   'b', 0,   'V', 1,   '^', 16,   4,    0};
constexpr uint32_t kCrc = 0x63572BAF;

uint32_t CrcOf(std::string_view text) {
  tvb::Crc32 crc;
  crc.Add({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
  return crc.value();
}

// Bit by bit, as the standard has it.
uint32_t SlowCrc(const Buffer &bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
      crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
  }
  return ~crc;
}

TEST(TvbCrc, HasTheValuesOfTheStandard) {
  EXPECT_EQ(CrcOf("123456789"), 0xCBF43926);
  EXPECT_EQ(CrcOf(""), 0u);
  EXPECT_EQ(CrcOf("a"), 0xE8B7BE43);
  EXPECT_EQ(CrcOf("The quick brown fox jumps over the lazy dog"), 0x414FA339u);
}

TEST(TvbCrc, IsTheSameInAnyPieces) {
  const Buffer bytes = tvb_data::Random(67, 1);
  for (size_t size = 0; size <= bytes.size(); ++size) {
    const Buffer some(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
    for (size_t first = 0; first <= size; ++first) {
      tvb::Crc32 crc;
      crc.Add(tvb::Bytes(some).first(first));
      crc.Add(tvb::Bytes(some).subspan(first));
      ASSERT_EQ(crc.value(), SlowCrc(some)) << first << " of " << size << " bytes";
    }
  }
}

TEST(TvbSeal, IsTenBytesOfTheHeader) {
  EXPECT_EQ(tvb::Writer().Finish(), kUnsealed);
  Buffer file = kUnsealed;
  tvb::Seal(file);
  EXPECT_EQ(file, kSealed);
  tvb::Unseal(file);
  EXPECT_EQ(file, kUnsealed);
  const auto seal = tvb::SealBytes(kCrc);
  EXPECT_EQ(Buffer(seal.begin(), seal.end()), Buffer(kSealed.begin() + 1, kSealed.begin() + 11));
}

TEST(TvbSeal, ReplacesWhatTheHeaderHad) {
  Buffer file = kUnsealed;
  for (size_t i = 1; i <= 10; ++i) {
    file[i] = static_cast<uint8_t>(0xA0 + i);
  }
  tvb::Seal(file);
  EXPECT_EQ(file, kSealed);
  tvb::Seal(file);
  EXPECT_EQ(file, kSealed);
}

TEST(TvbSeal, LeavesTooShortAFileAlone) {
  const Buffer ten = {'a', 1, 2, 3, 4, 5, 6, 7, 8, 9};
  Buffer file = ten;
  tvb::Seal(file);
  EXPECT_EQ(file, ten);
  tvb::Unseal(file);
  EXPECT_EQ(file, ten);
}

TEST(TvbSeal, IsRightWrongOrNotThere) {
  const tvb::SealView right = tvb::SealOf(kSealed);
  EXPECT_EQ(right.state, SealState::kRight);
  EXPECT_EQ(right.stored, kCrc);
  EXPECT_EQ(right.found, kCrc);

  const tvb::SealView none = tvb::SealOf(kUnsealed);
  EXPECT_EQ(none.state, SealState::kNone);
  EXPECT_EQ(none.stored, 0u);
  EXPECT_EQ(none.found, kCrc);
  EXPECT_EQ(tvb::SealOf({}).state, SealState::kNone);

  Buffer changed = kSealed;
  changed.back() = 1;
  const tvb::SealView wrong = tvb::SealOf(changed);
  EXPECT_EQ(wrong.state, SealState::kWrong);
  EXPECT_EQ(wrong.stored, kCrc);
  EXPECT_EQ(wrong.found, 0x14501B39u);

  changed = kSealed;
  changed.push_back('^');
  EXPECT_EQ(tvb::SealOf(changed).state, SealState::kWrong);
}

TEST(TvbSeal, IsToldInWords) {
  EXPECT_EQ(tvb::SealText({SealState::kNone, 0, 0}), "not sealed");
  EXPECT_EQ(tvb::SealText({SealState::kRight, 0x0BF43926, 0x0BF43926}), "sealed (CRC 0BF43926)");
  EXPECT_EQ(tvb::SealText({SealState::kWrong, 0x0BF43926, 0xE8B7BE43}),
            "seal wrong (CRC 0BF43926 instead of E8B7BE43)");
}

TEST(TvbSeal, OfAFileCutInsideItIsWrong) {
  for (size_t size = 0; size < 11; ++size) {
    const tvb::SealView seal = tvb::SealOf(tvb::Bytes(kSealed).first(size));
    EXPECT_EQ(seal.state, size < 7 ? SealState::kNone : SealState::kWrong) << size << " bytes";
  }
  EXPECT_EQ(tvb::SealOf(tvb::Bytes(kSealed).first(9)).stored, 0x00002BAFu);
}

// No file of 7 to 10 bytes has a CRC that what it has of one could say in full.
TEST(TvbSeal, OfAFileCutInsideItIsWrongWhateverItsCrc) {
  uint64_t files = 0;
  for (uint32_t first = 0; first < 256; ++first) {
    for (size_t size = 7; size <= 10; ++size) {
      Buffer cut(kSealed.begin(), kSealed.begin() + static_cast<ptrdiff_t>(size));
      cut[0] = static_cast<uint8_t>(first);
      const uint32_t crc = tvb::SealOf(cut).found;
      for (size_t at = 7; at < size; ++at) {
        cut[at] = static_cast<uint8_t>(crc >> 8 * (at - 7));
      }
      EXPECT_EQ(tvb::SealOf(cut).state, SealState::kWrong);
      ++files;
    }
  }
  EXPECT_EQ(files, 1024u);
}

TEST(TvbSeal, IsReadInAnySteps) {
  for (uint64_t step = 1; step <= kSealed.size() + 1; ++step) {
    tvb::SealReader reader(kSealed);
    for (uint64_t offset = 0; offset < 3 * kSealed.size(); offset += step) {
      reader.ReadTo(offset);
      reader.ReadTo(offset / 2);
    }
    EXPECT_EQ(reader.Finish().state, SealState::kRight) << "steps of " << step;
  }
}

TEST(TvbSeal, WrongIsAFindingOfTheCheck) {
  const auto check = [](const Buffer &file, std::vector<tvb::Finding> &findings) {
    return tvb::CheckImage(
        file, [&findings](const tvb::Finding &finding) { findings.push_back(finding); });
  };
  std::vector<tvb::Finding> findings;
  EXPECT_EQ(check(kSealed, findings).seal.state, SealState::kRight);
  EXPECT_EQ(check(kUnsealed, findings).seal.state, SealState::kNone);
  EXPECT_TRUE(findings.empty());

  Buffer changed = kSealed;
  changed[11] = 1;  // another compression byte that names encodings: only the seal can tell
  const tvb::CheckResult result = check(changed, findings);
  EXPECT_EQ(result.seal.state, SealState::kWrong);
  EXPECT_EQ(result.errors, 1u);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].severity, tvb::Severity::kDamaged);
  EXPECT_EQ(findings[0].offset, 1u);
  EXPECT_EQ(findings[0].record, 0u);
  EXPECT_EQ(findings[0].message,
            "the file is damaged: its seal says CRC 63572BAF, but that of its bytes is 742C3FEC; "
            "the framework refuses it before it drives a line");
}

}  // namespace
