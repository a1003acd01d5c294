// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The decompressor by itself, between two callbacks: lzw_decompress.
#include <random>

#include "lzw_codes.h"
#include "session.h"

namespace {

using image::Bytes;

// What the callbacks work on: they carry no argument of their own.
Bytes g_input;
size_t g_taken;
Bytes g_output;

u32 TakeByte() {
  return g_taken < g_input.size() ? g_input[g_taken++] : 0xFFFFFFFF;
}

void GiveByte(u32 byte) {
  EXPECT_LE(byte, 255u);
  g_output.push_back(static_cast<uint8_t>(byte));
}

class LzwStream : public shim::Test {
 protected:
  s32 Decompress(const Bytes &stream) {
    g_input = stream;
    g_taken = 0;
    g_output.clear();
    return lzw_decompress(GiveByte, TakeByte);
  }

  // Decodes a good stream that bytes follow, and checks that exactly the stream was used.
  Bytes Decoded(const Bytes &stream) {
    EXPECT_EQ(Decompress(image::Join({stream, {0x5E, 0xFF}})), 0);
    EXPECT_EQ(g_taken, stream.size());
    EXPECT_EQ(shim::LiveRequests(), 0u);
    return g_output;
  }
};

TEST_F(LzwStream, EndCodeAlone) {
  EXPECT_EQ(Decoded({0x00, 0xFF, 0x01}), Bytes{});
}

TEST_F(LzwStream, OneLiteral) {
  EXPECT_EQ(Decoded({0x00, 0x41, 0xFF, 0x01}), (Bytes{0x41}));
}

TEST_F(LzwStream, StringThatIsBeingDefined) {
  EXPECT_EQ(Decoded({0x00, 0x41, 0xFF, 0xFE, 0x03}), (Bytes{0x41, 0x41, 0x41}));
}

TEST_F(LzwStream, StringsOfStrings) {
  EXPECT_EQ(Decoded({0x00, 0x41, 0x42, 0xFE, 0xFF, 0xFD, 0x07}),
            (Bytes{0x41, 0x42, 0x41, 0x42, 0x41, 0x42, 0x41}));
}

TEST_F(LzwStream, ClearRightAfterTheParameter) {
  EXPECT_EQ(Decoded({0x00, 0xFF, 0x82, 0xFE, 0x03}), (Bytes{0x41}));
}

TEST_F(LzwStream, TheTestsOwnStreamsAreTheSame) {
  EXPECT_EQ(lzw::Stream(0).End(), (Bytes{0x00, 0xFF, 0x01}));
  EXPECT_EQ(lzw::Stream(0).Put(0x41).Put(257).End(), (Bytes{0x00, 0x41, 0xFF, 0xFE, 0x03}));
  EXPECT_EQ(lzw::Stream(0).Put(0x41).Put(0x42).Put(257).Put(259).End(),
            (Bytes{0x00, 0x41, 0x42, 0xFE, 0xFF, 0xFD, 0x07}));
  EXPECT_EQ(lzw::Stream(0).Put(256).Put(0x41).End(), (Bytes{0x00, 0xFF, 0x82, 0xFE, 0x03}));
}

TEST_F(LzwStream, ClearForgetsTheStrings) {
  const Bytes stream =
      lzw::Stream(0).Put('a').Put('b').Put(257).Put(256).Put('c').Put('d').Put(257).End();
  EXPECT_EQ(Decoded(stream), (Bytes{'a', 'b', 'a', 'b', 'c', 'd', 'c', 'd'}));
}

TEST_F(LzwStream, SeveralClearsInARow) {
  const Bytes stream = lzw::Stream(0).Put(256).Put(256).Put('x').Put(256).Put(256).Put('y').End();
  EXPECT_EQ(Decoded(stream), (Bytes{'x', 'y'}));
}

TEST_F(LzwStream, FirstCodeDefinesNoString) {
  // 257 is "aa" only where the first code took a step without defining it.
  const Bytes stream = lzw::Stream(0).Put('a').Put('b').Put('c').Put(257).Put(258).End();
  EXPECT_EQ(Decoded(stream), (Bytes{'a', 'b', 'c', 'a', 'b', 'b', 'c'}));
}

TEST_F(LzwStream, BadParameterAllocatesAndReadsNothingMore) {
  for (int parameter = 4; parameter <= 255; ++parameter) {
    const s32 rc = Decompress({static_cast<uint8_t>(parameter), 0xFF, 0x01});
    EXPECT_EQ(rc, (parameter & 0xFC) != 0 ? 1 : 0) << parameter;
    EXPECT_EQ(g_taken, 1u) << parameter;
  }
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(LzwStream, MissingParameterAllocatesNothing) {
  EXPECT_EQ(Decompress({}), 1);
  EXPECT_TRUE(shim::Allocations().empty());
}

TEST_F(LzwStream, TablesOfEachSize) {
  const size_t entries[] = {256, 768, 1792, 3840};
  for (uint32_t k = 0; k < 4; ++k) {
    const size_t first = shim::Allocations().size();
    EXPECT_EQ(Decoded(lzw::Stream(k).Put(0x41).End()), (Bytes{0x41}));
    ASSERT_EQ(shim::Allocations().size(), first + 3);
    EXPECT_EQ(shim::Allocations()[first].size, entries[k]) << "the stack, k " << k;
    EXPECT_EQ(shim::Allocations()[first + 1].size, 2 * entries[k]) << "the prefixes, k " << k;
    EXPECT_EQ(shim::Allocations()[first + 2].size, entries[k]) << "the suffixes, k " << k;
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(shim::Allocations()[first + i].flags, shim::kGfpKernel);
    }
  }
}

TEST_F(LzwStream, EachTableThatCannotBeHadFails) {
  for (uint64_t n = 1; n <= 3; ++n) {
    shim::FailAllocation(n);
    EXPECT_EQ(Decompress({0x00, 0x41, 0xFF, 0x01}), 1) << n;
    EXPECT_EQ(g_taken, 1u) << n << ": only the parameter is read";
    EXPECT_TRUE(g_output.empty());
    EXPECT_EQ(shim::LiveRequests(), 0u) << n;
  }
  EXPECT_TRUE(shim::Messages().empty());
}

TEST_F(LzwStream, StreamCutAnywhereFailsAndKeepsWhatItWrote) {
  const Bytes whole = {0x00, 0x41, 0x42, 0xFE, 0xFF, 0xFD, 0x07};
  const size_t written[] = {0, 0, 1, 2, 2, 4, 7};
  for (size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(Decompress(Bytes(whole.begin(), whole.begin() + static_cast<long>(length))), 1);
    EXPECT_EQ(g_output.size(), written[length]) << length;
    EXPECT_EQ(shim::LiveRequests(), 0u);
  }
}

TEST_F(LzwStream, CodesAreReadInEightBitsAndOneAtTheTopOfTheirRange) {
  // Before code 255 (the counter then at 511) the threshold is 0: every code takes nine bits.
  lzw::Stream stream(0);
  Bytes expected;
  for (uint32_t i = 0; i < 255; ++i) {
    stream.Put(i);
    expected.push_back(static_cast<uint8_t>(i));
  }
  EXPECT_EQ(stream.next(), 257u) << "the counter has just wrapped";
  EXPECT_EQ(Decoded(stream.End()), expected);
}

TEST_F(LzwStream, CounterWrapsWithoutAClear) {
  lzw::Stream stream(0);
  Bytes expected;
  for (uint32_t i = 0; i < 300; ++i) {
    stream.Put(i * 7 % 256);
    expected.push_back(static_cast<uint8_t>(i * 7 % 256));
  }
  EXPECT_EQ(stream.next(), 302u);
  EXPECT_EQ(Decoded(stream.End()), expected);
}

TEST_F(LzwStream, DictionaryStartsAfreshAfterAWrap) {
  lzw::Stream stream(0);
  for (uint32_t i = 0; i < 255; ++i) {
    stream.Put('.');
  }
  // Wrapped: 'a' goes to the code that is never read, "ab" is the new 257.
  stream.Put('a').Put('b').Put(257).Put(258);
  const Bytes tail = {'a', 'b', 'a', 'b', 'b', 'a'};
  EXPECT_EQ(Decoded(stream.End()), image::Join({Bytes(255, '.'), tail}));
}

TEST_F(LzwStream, LongestStringsFitTheStack) {
  // Always the string that is being defined: each is one longer than the one before.
  for (uint32_t k = 0; k < 4; ++k) {
    lzw::Stream stream(k);
    stream.Put('z');
    size_t length = 1;
    for (size_t next = 2; stream.next() != 257; ++next) {
      stream.Put(stream.next() - 1);
      length += next;
    }
    EXPECT_EQ(Decoded(stream.End()), Bytes(length, 'z')) << k;
  }
}

// Codes at random, clears among them, through several wraps.
TEST_F(LzwStream, RandomCodesOfEverySize) {
  std::mt19937 random(20);
  for (uint32_t k = 0; k < 4; ++k) {
    for (const int codes : {1, 2, 250, 260, 1200, 9000}) {
      lzw::Stream stream(k);
      lzw::Model model(k);
      for (int i = 0; i < codes; ++i) {
        uint32_t code = static_cast<uint32_t>(random() % model.next());
        if (code == lzw::kClear && random() % 8 != 0) {
          code = 'k';
        }
        stream.Put(code);
        model.Put(code);
      }
      EXPECT_TRUE(Decoded(stream.End()) == model.output()) << "k " << k << ", codes " << codes;
    }
  }
}

TEST_F(LzwStream, RandomBytesEndWithoutTouchingForeignMemory) {
  std::mt19937 random(21);
  for (int round = 0; round < 2000; ++round) {
    Bytes stream(1 + random() % 300);
    for (uint8_t &byte : stream) {
      byte = static_cast<uint8_t>(random());
    }
    stream[0] &= 3;
    const s32 rc = Decompress(stream);
    EXPECT_TRUE(rc == 0 || rc == 1);
    EXPECT_EQ(shim::LiveRequests(), 0u);
  }
}

}  // namespace
