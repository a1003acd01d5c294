// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The reader's block decoders against the driver's: on noise and on mutated blocks both give the
// same bytes and stop at the same place.
#include <random>

#include "session.h"
#include "tvb/block.h"
#include "tvb_data.h"

namespace {

using session::Owned;
using tvb::BlockView;
using tvb::Buffer;

class TvbReadDriver : public session::SessionTest {
 protected:
  // The image is followed by nothing, as in a download.
  void ExpectTheSame(const Buffer &image, uint32_t count) {
    tvb::Cursor cursor(image, 0);
    const BlockView block = tvb::MeasureBlock(cursor, count, false);
    Load(image);
    g_compress = 0;
    g_read_limit = image.size();
    const Owned data(Quorlan_ProcessData(count));
    g_read_limit = READ_LIMIT_NONE;
    shim::ResetMessages();
    if (block.mode.value_or(5) > 4) {
      EXPECT_EQ(data, nullptr);
      EXPECT_EQ(g_pos, cursor.position());
    } else if (data != nullptr) {  // the driver cannot have a pattern of megabytes
      ExpectTheSameBlock(image, block, data);
    }
  }

  void ExpectTheSameBlock(const Buffer &image, const BlockView &block, const Owned &data) {
    if (block.offset + block.size <= image.size()) {
      EXPECT_EQ(g_pos, block.size);
    } else {
      EXPECT_GE(g_pos, image.size());
    }
    Buffer decoded = tvb::DecodeBlock(image, block);
    decoded.resize(block.written);
    EXPECT_EQ(session::Content(data, block.written), decoded);
  }

  std::mt19937 random_{20240607};
};

TEST_F(TvbReadDriver, OnNoise) {
  for (int i = 0; i < 20000; ++i) {
    Buffer image = tvb_data::Random(1 + random_() % 60, random_());
    image[0] = static_cast<uint8_t>(random_() % 6);
    // Dictionary sizes that are one, mostly; patterns that the driver can enlarge, since it leaks
    // those that it cannot.
    if (image[0] == 4 && image.size() > 1) {
      image[1] &= 0x83;
    }
    if (image[0] == 2 && image.size() > 2) {
      image[2] &= 0x7F;
    }
    ExpectTheSame(image, random_() % 40);
    if (HasFailure()) {
      ADD_FAILURE() << ::testing::PrintToString(image);
      break;
    }
  }
}

TEST_F(TvbReadDriver, OnMutatedBlocks) {
  for (int i = 0; i < 4000; ++i) {
    const Buffer data = tvb_data::Runs(1 + random_() % 700, 9, random_());
    const auto encoding = tvb::Encodings()[random_() % tvb::Encodings().size()].encoding;
    Buffer image = tvb::EncodeBlock(data, tvb::BlockChoice::As(encoding));
    image[1 + random_() % (image.size() - 1)] ^= static_cast<uint8_t>(1u << random_() % 8);
    image.resize(image.size() + random_() % 20, 0x5E);
    ExpectTheSame(image, static_cast<uint32_t>(data.size() + random_() % 3 - 1));
    if (HasFailure()) {
      ADD_FAILURE() << ::testing::PrintToString(image);
      break;
    }
  }
}

}  // namespace
