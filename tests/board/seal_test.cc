// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The framework's check of a seal, and the driver behind it, over every way in which a file can
// lose its end or have one wrong byte: a line moves only for what plays as the whole file does.
#include <gtest/gtest.h>

#include <cstdio>

#include "demo/part_file.h"
#include "driver/host.h"
#include "shim/fixture.h"
#include "shim/messages.h"
#include "shim/pins.h"
#include "tvb/seal.h"

extern "C" {
#include "board/cpldjtag_seal.h"
}

namespace {

// A part in which nothing has to be compared, so that a sound file plays to its end.
tvb::Buffer SealedFile() {
  constexpr demo::Part kPart = {0x0A014C35, 8, 32, 100, 20};
  demo::PartFile file({0, 0}, kPart);
  file.Program(demo::RowsOfText(kPart, "0123456789abcdefGHIJKLMNOPQRSTUV"));
  tvb::Buffer bytes = file.Finish();
  tvb::Seal(bytes);
  return bytes;
}

class BoardSealTest : public shim::Test {
 protected:
  // As the framework goes about it.
  struct Outcome {
    cpldjtag_seal seal;
    int32_t result;  // the driver's, if it was called
    uint64_t edges;
  };
  Outcome Download(tvb::Bytes file) {
    Outcome outcome = {};
    const uint32_t crc = cpldjtag_image_crc(file.data(), file.size());
    outcome.seal = cpldjtag_image_seal(file.data(), file.size(), crc);
    const uint64_t before = pins_.writes();
    if (outcome.seal != CPLDJTAG_SEAL_BROKEN) {
      outcome.result = TvbToVec(static_cast<download_context *>(pins_.context()), file.data(),
                                static_cast<uint32_t>(file.size()));
      shim::ClearMessages();
    }
    outcome.edges = pins_.writes() - before;
    return outcome;
  }

  shim::Pins pins_;
};

TEST_F(BoardSealTest, SealsAsTheToolDoes) {
  pins_.Record(false);
  AllowLeaks(1);  // a played file costs the driver one block
  const tvb::Buffer file = SealedFile();
  const Outcome whole = Download(file);
  EXPECT_EQ(whole.seal, CPLDJTAG_SEALED);
  EXPECT_EQ(whole.result, 1);
  EXPECT_GT(whole.edges, 1000u);
  EXPECT_EQ(cpldjtag_image_crc(file.data(), file.size()), tvb::SealOf(file).stored);
}

TEST_F(BoardSealTest, EveryTruncation) {
  pins_.Record(false);
  const tvb::Buffer file = SealedFile();
  uint64_t broken = 0;
  uint64_t no_file = 0;
  for (size_t size = 0; size < file.size(); ++size) {
    // Of its own size, so that a read past its end is seen.
    const tvb::Buffer cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(size));
    const Outcome outcome = Download(cut);
    ASSERT_EQ(outcome.edges, 0u) << size << " bytes";
    ASSERT_NE(outcome.result, 1) << size << " bytes";
    ++(outcome.seal == CPLDJTAG_SEAL_BROKEN ? broken : no_file);
  }
  EXPECT_EQ(no_file, 7u);  // without a whole magic it is no command file either
  EXPECT_EQ(broken, file.size() - 7);
  std::printf("%zu truncations: %ju refused by the seal, %ju by the driver, no edge\n", file.size(),
              uintmax_t{broken}, uintmax_t{no_file});
}

TEST_F(BoardSealTest, EveryWrongByte) {
  pins_.Record(false);
  AllowLeaks(1 + 6 * 255);
  tvb::Buffer file = SealedFile();
  const uint64_t whole = Download(file).edges;
  uint64_t broken = 0;
  uint64_t unsealed = 0;
  for (size_t at = 0; at < file.size(); ++at) {
    const bool in_magic = at >= 1 && at <= 6;
    for (int change = 1; change < 256; ++change) {
      file[at] ^= static_cast<uint8_t>(change);
      const Outcome outcome = Download(file);
      file[at] ^= static_cast<uint8_t>(change);
      ASSERT_EQ(outcome.seal, in_magic ? CPLDJTAG_UNSEALED : CPLDJTAG_SEAL_BROKEN)
          << "byte " << at << " by " << change;
      ASSERT_EQ(outcome.edges, in_magic ? whole : 0) << "byte " << at << " by " << change;
      ++(in_magic ? unsealed : broken);
    }
  }
  EXPECT_EQ(unsealed, 6u * 255);
  EXPECT_EQ(broken, (file.size() - 6) * 255);
  std::printf(
      "%zu bytes, each with its 255 other values: %ju refused without an edge, %ju in the "
      "magic and played as they are\n",
      file.size(), uintmax_t{broken}, uintmax_t{unsealed});
}

}  // namespace
