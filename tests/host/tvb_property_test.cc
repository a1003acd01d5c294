// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the writer encodes, the driver decodes: to the same bytes, from exactly the bytes written.
#include <memory>

#include "host.h"
#include "lzw_codes.h"
#include "shim.h"
#include "tvb/block.h"
#include "tvb/block_encoder.h"
#include "tvb/number.h"
#include "tvb/writer.h"
#include "tvb_data.h"

namespace {

using tvb::BlockChoice;
using tvb::Buffer;
using tvb::Encoding;

class TvbProperty : public shim::Test {
 protected:
  // Makes `block` an image of its own size at the reader's position; it ends where it ends.
  void Load(const Buffer &block) {
    image_ = std::make_unique<uint8_t[]>(block.size());
    std::copy(block.begin(), block.end(), image_.get());
    g_tvb_buffer = image_.get();
    g_tvb_length = block.size();
    g_pos = 0;
  }

  // Decodes `block` as `data.size()` bytes and compares.
  void ExpectDecoded(const Buffer &block, const Buffer &data, const std::string &name) {
    Load(block);
    u8 *decoded = Quorlan_ProcessData(static_cast<u32>(data.size()));
    ASSERT_NE(decoded, nullptr) << name;
    EXPECT_TRUE(std::equal(data.begin(), data.end(), decoded)) << name << ", " << data.size();
    EXPECT_EQ(g_pos, block.size()) << name << ", " << data.size();
    kfree(decoded);
    EXPECT_TRUE(shim::Messages().empty());
  }

  std::unique_ptr<uint8_t[]> image_;
};

constexpr size_t kSizes[] = {0,   1,   2,   3,   5,   7,   8,    15,   16,   30,   64,
                             120, 255, 256, 257, 300, 630, 1024, 4000, 5040, 20000};

template <typename Check>
void ForEachSample(Check check) {
  for (size_t size : kSizes) {
    for (const tvb_data::Sample &sample : tvb_data::Samples(size)) {
      check(sample);
    }
  }
}

TEST_F(TvbProperty, TheSmallestBlock) {
  ForEachSample([&](const tvb_data::Sample &s) {
    ExpectDecoded(tvb::EncodeBlock(s.bytes), s.bytes, s.name);
  });
}

TEST_F(TvbProperty, Raw) {
  ForEachSample([&](const tvb_data::Sample &s) {
    ExpectDecoded(tvb::EncodeBlock(s.bytes, BlockChoice::As(Encoding::kRaw)), s.bytes, s.name);
  });
}

TEST_F(TvbProperty, RunLengthOfTheBestAndOfAnyEscapeByte) {
  ForEachSample([&](const tvb_data::Sample &s) {
    ExpectDecoded(tvb::EncodeBlock(s.bytes, BlockChoice::As(Encoding::kRunLength)), s.bytes,
                  s.name);
    for (int escape : {0x00, 0x55, 0x80, 0xFF}) {
      ExpectDecoded(tvb::EncodeBlock(s.bytes, BlockChoice::With(Encoding::kRunLength, escape)),
                    s.bytes, s.name + ", escape " + std::to_string(escape));
    }
  });
}

TEST_F(TvbProperty, NibblePatternsOfEveryLengthThatIsOne) {
  size_t odd = 0;
  size_t even = 0;
  ForEachSample([&](const tvb_data::Sample &s) {
    const Buffer smallest = tvb::EncodeBlock(s.bytes, BlockChoice::As(Encoding::kNibble));
    const size_t shortest = static_cast<size_t>(tvb::Cursor(smallest, 1).Number().value);
    for (size_t nibbles = shortest; nibbles <= 2 * s.bytes.size(); nibbles += shortest) {
      if (nibbles > 0 && 2 * s.bytes.size() % nibbles == 0) {
        const BlockChoice choice =
            BlockChoice::With(Encoding::kNibble, static_cast<int64_t>(nibbles));
        ExpectDecoded(tvb::EncodeBlock(s.bytes, choice), s.bytes,
                      s.name + ", nibbles " + std::to_string(nibbles));
        ++(nibbles % 2 != 0 ? odd : even);
      }
      if (shortest == 0) {
        break;
      }
    }
  });
  EXPECT_GT(odd, 100u);
  EXPECT_GT(even, 300u);
}

TEST_F(TvbProperty, BitCodingOfTheBestAndOfAnySymbol) {
  ForEachSample([&](const tvb_data::Sample &s) {
    ExpectDecoded(tvb::EncodeBlock(s.bytes, BlockChoice::As(Encoding::kBitCoding)), s.bytes,
                  s.name);
    for (int symbol : {0x00, 0x55, 0xFF}) {
      ExpectDecoded(tvb::EncodeBlock(s.bytes, BlockChoice::With(Encoding::kBitCoding, symbol)),
                    s.bytes, s.name + ", symbol " + std::to_string(symbol));
    }
  });
}

TEST_F(TvbProperty, LzwWithEveryDictionary) {
  ForEachSample([&](const tvb_data::Sample &s) {
    for (int k = 0; k <= 3; ++k) {
      ExpectDecoded(tvb::EncodeBlock(s.bytes, BlockChoice::With(Encoding::kLzw, k)), s.bytes,
                    s.name + ", k " + std::to_string(k));
    }
  });
}

TEST_F(TvbProperty, LzwWithClearCodes) {
  ForEachSample([&](const tvb_data::Sample &s) {
    for (int k = 0; k <= 3; ++k) {
      for (size_t clear_every : {1, 2, 100, 254, 255, 256, 1000}) {
        Buffer block = {4};
        tvb::Append(block, lzw::Restarting(s.bytes, static_cast<uint32_t>(k), clear_every));
        ExpectDecoded(block, s.bytes,
                      s.name + ", k " + std::to_string(k) + ", " + std::to_string(clear_every));
      }
    }
  });
}

// Streams that end with the counter at each value around the first and second wrap.
TEST_F(TvbProperty, LzwAroundTheWrapsOfEveryDictionary) {
  for (int k = 0; k <= 3; ++k) {
    const size_t codes_to_wrap = (512u << k) - 257;
    for (size_t wraps : {1, 2, 5}) {
      for (size_t size = wraps * codes_to_wrap - 3; size <= wraps * codes_to_wrap + 3; ++size) {
        Buffer data = tvb_data::WithoutPairs(size);
        ExpectDecoded(tvb::EncodeBlock(data, BlockChoice::With(Encoding::kLzw, k)), data,
                      "k " + std::to_string(k));
      }
    }
  }
}

TEST_F(TvbProperty, LzwThroughManyWrapsOfEveryDictionary) {
  for (const tvb_data::Sample &s : tvb_data::Samples(120000)) {
    for (int k = 0; k <= 3; ++k) {
      ExpectDecoded(tvb::EncodeBlock(s.bytes, BlockChoice::With(Encoding::kLzw, k)), s.bytes,
                    s.name + ", k " + std::to_string(k));
    }
  }
}

TEST_F(TvbProperty, RandomBlocksOfRandomKinds) {
  std::mt19937 random(20240229);
  for (int round = 0; round < 2000; ++round) {
    std::vector<tvb_data::Sample> samples = tvb_data::Samples(random() % 700);
    const Buffer &data = samples[random() % samples.size()].bytes;
    BlockChoice choice =
        BlockChoice::As(tvb::Encodings()[random() % tvb::Encodings().size()].encoding);
    ExpectDecoded(tvb::EncodeBlock(data, choice), data, "round " + std::to_string(round));
  }
}

// The encoder of the writer remembers blocks and chooses bits that may be anything.
TEST_F(TvbProperty, BlocksOfTheWritersEncoder) {
  std::mt19937 random(20241122);
  tvb::BlockEncoder encoder;
  for (int round = 0; round < 3000; ++round) {
    const std::vector<tvb_data::Sample> samples = tvb_data::Samples(1 + random() % 40);
    const Buffer &data = samples[random() % samples.size()].bytes;
    Buffer care(random() % 2 == 0 ? data.size() : 0);
    for (uint8_t &byte : care) {
      byte = static_cast<uint8_t>(random() % 3 == 0 ? random() : 0xFF);
    }
    Buffer block;
    encoder(block, static_cast<uint32_t>(8 * data.size()), data, care);
    Load(block);
    u8 *decoded = Quorlan_ProcessData(static_cast<u32>(data.size()));
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(g_pos, block.size());
    for (size_t i = 0; i < data.size(); ++i) {
      EXPECT_EQ((decoded[i] ^ data[i]) & (care.empty() ? 0xFF : care[i]), 0) << round;
    }
    kfree(decoded);
  }
}

TEST_F(TvbProperty, NumbersReadBack) {
  for (uint64_t power = 1; power <= 0x80000000; power <<= 1) {
    for (uint64_t value : {power - 1, power, power + 1}) {
      Buffer bytes;
      tvb::AppendNumber(bytes, static_cast<uint32_t>(value));
      Load(bytes);
      EXPECT_EQ(static_cast<u32>(Quorlan_ReadNumber()), value);
      EXPECT_EQ(g_pos, bytes.size());
    }
  }
}

// Has the driver read the body of a run-test at `hz`; gives the cycles that it would clock.
class TvbRunTestProperty : public TvbProperty {
 protected:
  u64 Cycles(uint64_t microseconds, uint64_t cycles, bool whole_kilohertz, u64 hz) {
    Buffer body = tvb::RunTestBody(microseconds, cycles, whole_kilohertz);
    Load(body);
    g_pos = 1;
    g_freq = hz;
    u64 result = Quorlan_ProcessRuntestCmd();
    EXPECT_EQ(g_pos, body.size());
    return result;
  }
};

TEST_F(TvbRunTestProperty, CyclesAreExact) {
  std::mt19937 random(4711);
  for (uint64_t cycles : {0u, 1u, 32757u, 32758u, 32759u, 32768u, 32769u, 65536u, 0x7FFF7FF4u,
                          0x7FFF7FF5u, 0x7FFF7FF6u, 0x7FFFFFFEu, 0x7FFFFFFFu}) {
    EXPECT_EQ(Cycles(0, cycles, false, 1000000), cycles);
  }
  for (int round = 0; round < 5000; ++round) {
    uint64_t cycles = random() >> (1 + random() % 31);
    EXPECT_EQ(Cycles(0, cycles, false, 1000000), cycles);
  }
}

TEST_F(TvbRunTestProperty, TimesAreNeverShortAndExactAtOneMegahertz) {
  std::mt19937 random(4712);
  for (int round = 0; round < 5000; ++round) {
    uint64_t time = random() >> (random() % 32);
    u64 hz = 1 + (random() >> (1 + random() % 30));
    u64 whole = hz * time / 1000000;
    EXPECT_GE(Cycles(time, 0, false, hz), whole) << time << " us at " << hz;
    EXPECT_LE(Cycles(time, 0, false, hz), whole + 1) << time << " us at " << hz;
    EXPECT_EQ(Cycles(time, 5, true, 1000000), time + 5);
  }
}

}  // namespace
