// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Each of the shim's guards fails a test that breaks its rule, and no other test.
#include "shim.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sys/types.h>

#include <array>
#include <cstring>

#include "host.h"

namespace {

using shim::Allocations;
using shim::kFill;
using shim::kGfpKernel;
using shim::kGfpKernelZero;

// Not the address itself, so that the compiler cannot see through the tests' misuse of it.
uint8_t *Bytes(void *block) {
  uint8_t *volatile bytes = static_cast<uint8_t *>(block);
  return bytes;
}

// Calls of the C symbols to which no test can pass a wrong argument through the driver.
using PrintkFunction = int (*)(const char *, ...);
PrintkFunction volatile unchecked_printk = printk;

class ShimTest : public shim::Test {};
using ShimDeathTest = ShimTest;

TEST_F(ShimTest, BlocksAreFilledUnlessZeroed) {
  auto *plain = Bytes(__kmalloc(3, kGfpKernel));
  auto *zeroed = Bytes(__kmalloc(3, kGfpKernelZero));
  EXPECT_EQ(plain[0], kFill);
  EXPECT_EQ(plain[2], kFill);
  EXPECT_EQ(zeroed[0] | zeroed[1] | zeroed[2], 0);
  EXPECT_EQ(shim::LiveBlocks(), 2u);
  EXPECT_EQ(shim::LiveBytes(), 6u);
  EXPECT_EQ(shim::SizeOf(plain), 3u);
  kfree(plain);
  kfree(zeroed);
  EXPECT_EQ(shim::LiveBlocks(), 0u);
  EXPECT_EQ(shim::LiveBytes(), 0u);
}

TEST_F(ShimTest, KeepsEveryRequestInOrder) {
  void *first = __kmalloc(5, kGfpKernel);
  void *second = krealloc(first, 9, kGfpKernel);
  shim::FailAllocation(1);
  EXPECT_EQ(__kmalloc(7, kGfpKernelZero), nullptr);
  ASSERT_EQ(Allocations().size(), 3u);
  EXPECT_EQ(Allocations()[0].pointer, first);
  EXPECT_EQ(Allocations()[0].size, 5u);
  EXPECT_FALSE(Allocations()[0].reallocated);
  EXPECT_EQ(Allocations()[1].pointer, second);
  EXPECT_TRUE(Allocations()[1].reallocated);
  EXPECT_EQ(Allocations()[2].pointer, nullptr);
  EXPECT_EQ(Allocations()[2].flags, kGfpKernelZero);
  kfree(second);
}

TEST_F(ShimTest, KreallocMovesAndKeepsTheContent) {
  auto *first = Bytes(__kmalloc(4, kGfpKernel));
  std::memcpy(first, "abcd", 4);
  auto *second = Bytes(krealloc(first, 6, kGfpKernel));
  EXPECT_NE(first, second);
  EXPECT_FALSE(shim::IsLive(first));
  EXPECT_EQ(std::memcmp(second, "abcd", 4), 0);
  EXPECT_EQ(second[4], kFill);
  auto *third = Bytes(krealloc(second, 2, kGfpKernel));
  EXPECT_EQ(shim::SizeOf(third), 2u);
  EXPECT_EQ(std::memcmp(third, "ab", 2), 0);
  kfree(third);
}

TEST_F(ShimTest, FailedKreallocKeepsTheBlock) {
  void *block = __kmalloc(4, kGfpKernel);
  shim::FailAllocation(1);
  EXPECT_EQ(krealloc(block, 100, kGfpKernel), nullptr);
  EXPECT_TRUE(shim::IsLive(block));
  kfree(block);
}

TEST_F(ShimTest, FailsThePlannedRequestOnly) {
  shim::FailAllocation(2);
  void *first = __kmalloc(1, kGfpKernel);
  EXPECT_EQ(__kmalloc(1, kGfpKernel), nullptr);
  void *third = __kmalloc(1, kGfpKernel);
  EXPECT_NE(third, nullptr);
  shim::FailAllocationsFrom(2);
  void *fourth = __kmalloc(1, kGfpKernel);
  EXPECT_NE(fourth, nullptr);
  EXPECT_EQ(__kmalloc(1, kGfpKernel), nullptr);
  EXPECT_EQ(krealloc(first, 1, kGfpKernel), nullptr);
  shim::FailAllocationsFrom(0);
  void *fifth = __kmalloc(1, kGfpKernel);
  EXPECT_NE(fifth, nullptr);
  for (void *block : {first, third, fourth, fifth}) {
    kfree(block);
  }
}

TEST_F(ShimTest, ZeroSizeBlocksAreDistinct) {
  void *a = __kmalloc(0, kGfpKernel);
  void *b = __kmalloc(0, kGfpKernel);
  EXPECT_NE(a, nullptr);
  EXPECT_NE(a, b);
  EXPECT_EQ(shim::SizeOf(a), 0u);
  kfree(a);
  kfree(b);
}

TEST_F(ShimTest, CountsFreesOfNull) {
  EXPECT_EQ(shim::FreesOfNull(), 0u);
  kfree(nullptr);
  EXPECT_EQ(shim::FreesOfNull(), 1u);
}

TEST_F(ShimTest, RefusesWhatAKernelCannotGive) {
  void *largest = __kmalloc(4 << 20, kGfpKernel);
  EXPECT_NE(largest, nullptr);
  kfree(largest);
  void *block = largest;
  EXPECT_NONFATAL_FAILURE(block = __kmalloc((4 << 20) + 1, kGfpKernel), "more than a kernel gives");
  EXPECT_EQ(block, nullptr);
  EXPECT_NONFATAL_FAILURE(block = __kmalloc(1, 0x400), "with the flags 1024");
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(shim::Violations().size(), 2u);
}

TEST_F(ShimTest, CatchesBadFrees) {
  static int foreign;
  auto *block = Bytes(__kmalloc(8, kGfpKernel));
  EXPECT_NONFATAL_FAILURE(kfree(&foreign), "free of what is no block");
  EXPECT_NONFATAL_FAILURE(kfree(block + 1), "free of what is no block");
  kfree(block);
  EXPECT_NONFATAL_FAILURE(kfree(block), "block freed twice");
  EXPECT_NONFATAL_FAILURE(kfree(krealloc(block, 1, kGfpKernel)), "krealloc of what is no");
  EXPECT_NONFATAL_FAILURE(shim::SizeOf(block), "size asked");
}

// Writes around a block and into a freed one: with the address sanitizer the access itself traps.
#if M7_SANITIZED

TEST_F(ShimDeathTest, SanitizedAccessesTrap) {
  auto *block = Bytes(__kmalloc(5, kGfpKernel));
  uint8_t volatile seen = 0;
  EXPECT_DEATH(seen = block[5], "AddressSanitizer");
  EXPECT_DEATH(seen = block[-1], "AddressSanitizer");
  kfree(block);
  EXPECT_DEATH(seen = block[0], "AddressSanitizer");
  EXPECT_EQ(seen, 0);
}

#else

TEST_F(ShimTest, CatchesWritesAroundABlock) {
  auto *block = Bytes(__kmalloc(8, kGfpKernel));
  block[8] = 0;
  EXPECT_NONFATAL_FAILURE(kfree(block), "write past the block of 8 bytes");
  block = Bytes(__kmalloc(8, kGfpKernel));
  block[-1] = 0;
  EXPECT_NONFATAL_FAILURE(kfree(block), "write before the block of 8 bytes");
  shim::ResetAllocator();
}

TEST_F(ShimTest, CatchesACopyOfOneRedZoneIntoTheOther) {
  auto *block = Bytes(__kmalloc(8, kGfpKernel));
  block[-1] = block[8];
  EXPECT_NONFATAL_FAILURE(kfree(block), "write before the block of 8 bytes");
  block = Bytes(__kmalloc(8, kGfpKernel));
  block[8] = block[-1];
  EXPECT_NONFATAL_FAILURE(kfree(block), "write past the block of 8 bytes");
  shim::ResetAllocator();
}

TEST_F(ShimTest, CatchesWritesIntoZeroSizeAndFreedBlocks) {
  auto *empty = Bytes(__kmalloc(0, kGfpKernel));
  empty[0] = 0;
  EXPECT_NONFATAL_FAILURE(shim::VerifyMemory(), "write past the block of 0 bytes");
  shim::ResetAllocator();
  auto *block = Bytes(__kmalloc(2, kGfpKernel));
  kfree(block);
  block[1] = 0;
  EXPECT_NONFATAL_FAILURE(shim::VerifyMemory(), "write into the freed block of 2 bytes");
  shim::ResetAllocator();
}

#endif

TEST_F(ShimTest, BlocksOfTheTestAreNoLeaks) {
  uint8_t *text = shim::NewString("chain");
  EXPECT_STREQ(reinterpret_cast<char *>(text), "chain");
  EXPECT_EQ(shim::SizeOf(text), 6u);
  EXPECT_TRUE(Allocations().empty());
  EXPECT_EQ(shim::LiveBlocks(), 1u);
  EXPECT_EQ(shim::LiveRequests(), 0u);
}

TEST_F(ShimTest, LeaksCanBeAllowed) {
  AllowLeaks(1);
  EXPECT_NE(__kmalloc(1, kGfpKernel), nullptr);
}

TEST_F(ShimTest, FormatsAsTheKernel) {
  EXPECT_EQ(printk("%s %c %d %8d %u", "tck", 'x', -3, 42, 4000000000u), 28);
  drv_log_record(43, 2, 0, "%lldms %02x%02X", 123456789012ll, 10, 171);
  EXPECT_EQ(shim::Messages(),
            (std::vector<shim::Message>{shim::Printk("tck x -3       42 4000000000"),
                                        shim::Log(43, 2, "123456789012ms 0aAB")}));
}

TEST_F(ShimTest, CatchesUnknownFormats) {
  EXPECT_NONFATAL_FAILURE(unchecked_printk("%p", nullptr), "conversion not known");
  EXPECT_NONFATAL_FAILURE(unchecked_printk("%s", nullptr), "null string");
  EXPECT_NONFATAL_FAILURE(unchecked_printk("100%"), "conversion not known");
}

TEST_F(ShimTest, TellsMessagesApart) {
  EXPECT_FALSE(shim::Log(43, 2, "a") == shim::Log(43, 1, "a"));
  EXPECT_FALSE(shim::Log(43, 2, "a") == shim::Log(0, 2, "a"));
  EXPECT_FALSE(shim::Log(43, 2, "a") == shim::Log(43, 2, "b"));
  EXPECT_FALSE(shim::Log(0, 0, "a") == shim::Printk("a"));
}

TEST_F(ShimTest, ClocksFollowTheirPlan) {
  EXPECT_EQ(sched_clock(), 0u);
  EXPECT_EQ(sched_clock(), 1u);
  shim::SetSchedClock({50, 20});
  EXPECT_EQ(sched_clock(), 50u);
  EXPECT_EQ(sched_clock(), 20u);
  EXPECT_EQ(sched_clock(), 21u);
  shim::SetSchedClockStep(1000);
  EXPECT_EQ(sched_clock(), 0u);
  EXPECT_EQ(sched_clock(), 1000u);
  EXPECT_EQ(log_get_timestamp_ms(), 0);
  shim::SetTimestamps({7, 9});
  EXPECT_EQ(log_get_timestamp_ms(), 7);
  EXPECT_EQ(log_get_timestamp_ms(), 9);
  EXPECT_EQ(log_get_timestamp_ms(), 9);
  __const_udelay(12);
  EXPECT_EQ(shim::Delays(), std::vector<unsigned long>{12});
}

TEST_F(ShimTest, CharacterClassesAreTheKernels) {
  const unsigned char *ctype = _ctype;
  for (int c = 0; c < 256; ++c) {
    const bool upper = (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7);
    EXPECT_EQ(ctype[c] & 0x01, upper ? 1 : 0) << c;
  }
  EXPECT_EQ(ctype[0x00], 0x08);
  EXPECT_EQ(ctype[int{'\n'}], 0x28);
  EXPECT_EQ(ctype[int{' '}], 0xA0);
  EXPECT_EQ(ctype[int{'0'}], 0x04);
  EXPECT_EQ(ctype[int{'@'}], 0x10);
  EXPECT_EQ(ctype[int{'F'}], 0x41);
  EXPECT_EQ(ctype[int{'G'}], 0x01);
  EXPECT_EQ(ctype[int{'f'}], 0x42);
  EXPECT_EQ(ctype[int{'z'}], 0x02);
  EXPECT_EQ(ctype[0x80], 0x00);
  EXPECT_EQ(ctype[0xDF], 0x02);
  EXPECT_EQ(ctype[0xF7], 0x10);
}

TEST_F(ShimTest, FilesHaveTheirOwnPosition) {
  auto *open = static_cast<file *>(shim::OpenFile("abcde"));
  std::array<char, 8> buffer{};
  EXPECT_EQ(kernel_read(open, buffer.data(), 3, m7_file_pos(open)), 3);
  EXPECT_EQ(kernel_read(open, buffer.data() + 3, 5, m7_file_pos(open)), 2);
  EXPECT_STREQ(buffer.data(), "abcde");
  EXPECT_EQ(shim::FilePosition(open), 5);
  EXPECT_EQ(kernel_read(open, buffer.data(), 5, m7_file_pos(open)), 0);
  shim::FailReads(true);
  EXPECT_LT(kernel_read(open, buffer.data(), 5, m7_file_pos(open)), 0);
  EXPECT_EQ(shim::Reads(), 4u);
  EXPECT_NONFATAL_FAILURE(m7_file_pos(reinterpret_cast<file *>(buffer.data())), "no open file");
}

// The slots of the table, called as the driver calls them.
struct Board {
  shim::Pins pins;
  const pin_operations *operations = static_cast<const pin_operations *>(pins.operations());
};

TEST_F(ShimTest, PinsKeepEvents) {
  Board board;
  board.pins.OnRead([] { return 0x102; });
  EXPECT_NE(board.operations->drive_high(5), 0);
  board.operations->drive_low(6);
  board.operations->drive_high(8);
  EXPECT_EQ(board.operations->read(7), 0x102);
  EXPECT_EQ(board.pins.Text(), "I1 M0 K1 R2");
  EXPECT_EQ(board.pins.writes(), 3u);
  EXPECT_EQ(board.pins.reads(), 1u);
  board.pins.Record(false);
  board.operations->drive_low(8);
  EXPECT_EQ(board.pins.events().size(), 4u);
  EXPECT_EQ(board.pins.writes(), 4u);
}

TEST_F(ShimTest, PinsCatchWrongUse) {
  Board board;
  EXPECT_NONFATAL_FAILURE(board.operations->drive_high(7), "line 7 driven");
  EXPECT_NONFATAL_FAILURE(board.operations->drive_low(9), "line 9 driven");
  EXPECT_NONFATAL_FAILURE(board.operations->read(8), "line 8 read");
  const auto unused = reinterpret_cast<int (*)(uint32_t)>(board.operations->framework[0]);
  EXPECT_NONFATAL_FAILURE(unused(5), "unused slot");
}

TEST_F(ShimTest, PinsCatchWrites) {
  EXPECT_NONFATAL_FAILURE(
      {
        Board board;
        static_cast<uint8_t *>(board.pins.context())[24] = 0;
      },
      "context was written to");
  EXPECT_NONFATAL_FAILURE(
      {
        Board board;
        const_cast<pin_config *>(static_cast<const pin_config *>(board.pins.config()))->tck = 9;
      },
      "record was written to");
  EXPECT_NONFATAL_FAILURE(
      {
        Board board;
        const_cast<pin_operations *>(board.operations)->read = nullptr;
      },
      "table was written to");
}

TEST_F(ShimTest, ResetFreesWhatTheDriverHolds) {
  g_vector = static_cast<uint8_t *>(__kmalloc(8, kGfpKernel));
  g_hir_data = static_cast<uint8_t *>(__kmalloc(8, kGfpKernel));
  static uint8_t foreign;
  g_chip_idcode = &foreign;
  g_vector_size = 1;
  shim::ResetDriverGlobals();
  EXPECT_EQ(shim::LiveBlocks(), 0u);
  EXPECT_EQ(g_vector, nullptr);
  EXPECT_EQ(g_chip_idcode, nullptr);
  EXPECT_EQ(g_vector_size, 3200u);
}

}  // namespace
