// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tvb/identity_check.h"
#include "tvb/player.h"

namespace {

using tvb::Buffer;
using tvb::IdentityCheck;

// What a file does, step by step: the place of the first scan that is a risk, and 0 if none is.
class File {
 public:
  File &Instruction(Buffer tdi) {
    Take(check_.Scan({++scans_}, tvb::kSir, {static_cast<uint32_t>(8 * tdi.size()), tdi, {}, {}}));
    return *this;
  }
  File &Data(Buffer tdo = {}, Buffer mask = {}) {
    const Buffer tdi(tdo.empty() ? 4 : tdo.size());
    Take(check_.Scan({++scans_}, tvb::kSdr,
                     {static_cast<uint32_t>(8 * tdi.size()), tdi, tdo, mask}));
    return *this;
  }
  File &Idcode() {
    return Data({0xAC, 0x32, 0x80, 0x50}, {0xFF, 0xFF, 0xFF, 0xF0});
  }
  File &Wait() {
    Take(check_.Wait());
    return *this;
  }
  uint64_t Risk() {
    Take(check_.End());
    return risk_;
  }
  std::string Message() {
    Take(check_.End());
    return message_;
  }

 private:
  void Take(const std::optional<IdentityCheck::Risk> &risk) {
    if (risk && !check_.settled()) {
      ADD_FAILURE() << "a risk that settles nothing";
    }
    if (risk && risk_ == 0) {
      risk_ = risk->scan.offset;
      message_ = risk->message;
    }
  }

  IdentityCheck check_;
  uint64_t scans_ = 0;
  uint64_t risk_ = 0;
  std::string message_;
};

const Buffer kErase = {0x04};
const Buffer kReadIdcode = {0x07};

TEST(TvbIdentity, FindsAWaitBeforeTheComparison) {
  EXPECT_EQ(1u, File().Instruction(kErase).Wait().Risk());
  EXPECT_EQ(1u, File().Instruction(kErase).Wait().Data().Idcode().Risk());
  EXPECT_EQ(2u, File().Instruction(kErase).Data().Wait().Idcode().Risk());
  EXPECT_EQ(1u, File().Data().Wait().Idcode().Risk());
  EXPECT_EQ(
      "the file waits after this scan, as after an erase, before it has compared an IDCODE: a "
      "wrong "
      "chip would be erased; compare the IDCODE first (tvb compile --require-idcode IDCODE)",
      File().Data().Wait().Message());
}

TEST(TvbIdentity, FindsASecondInstruction) {
  EXPECT_EQ(2u, File().Instruction(kReadIdcode).Instruction(kErase).Idcode().Risk());
  EXPECT_EQ(0u, File().Instruction(kErase).Instruction(kErase).Risk());
  EXPECT_EQ(
      "the file loads this second instruction, as for an erase, before it has compared an IDCODE: "
      "a "
      "wrong chip would be erased; compare the IDCODE first (tvb compile --require-idcode IDCODE)",
      File().Instruction(kReadIdcode).Instruction(kErase).Message());
}

TEST(TvbIdentity, AcceptsAComparisonThatComesFirst) {
  EXPECT_EQ(0u, File().Idcode().Instruction(kErase).Wait().Risk());
  EXPECT_EQ(0u, File().Instruction(kReadIdcode).Idcode().Instruction(kErase).Wait().Risk());
  EXPECT_EQ(0u, File().Instruction(kReadIdcode).Wait().Idcode().Instruction(kErase).Wait().Risk());
  EXPECT_EQ(0u, File().Wait().Idcode().Risk());
}

TEST(TvbIdentity, PassesOverBypassAndThePlayersOwnQuery) {
  EXPECT_EQ(0u, File().Instruction({0xFF}).Wait().Instruction(kReadIdcode).Idcode().Risk());
  const Buffer query = tvb::ChainInstructions({1, 1}, tvb::kIdcode);
  EXPECT_EQ(0u, File().Instruction(query).Wait().Instruction(kReadIdcode).Idcode().Risk());
  const Buffer other = tvb::ChainInstructions({1, 0}, tvb::kOtherIdcode);
  EXPECT_EQ(0u, File().Instruction(other).Wait().Instruction(kReadIdcode).Idcode().Risk());
  const Buffer erase = tvb::ChainInstructions({1, 1}, 0x20);
  EXPECT_EQ(1u, File().Instruction(erase).Wait().Instruction(kReadIdcode).Idcode().Risk());
}

TEST(TvbIdentity, KnowsAComparisonOfAnIdcode) {
  const auto compares = [](const Buffer &tdo, const Buffer &mask) {
    return tvb::ComparesIdcode(
        {static_cast<uint32_t>(8 * tdo.size()), Buffer(tdo.size()), tdo, mask});
  };
  const Buffer all(4, 0xFF);
  EXPECT_TRUE(compares({0xAC, 0x32, 0x80, 0x50}, all));
  EXPECT_FALSE(compares({0x2C, 0x32, 0x80, 0x50}, all)) << "bit 0 of an IDCODE is 1";
  EXPECT_TRUE(compares({0x2C, 0x32, 0x80, 0x50}, {0x7F, 0xFF, 0xFF, 0xFF}));
  EXPECT_FALSE(compares(all, all)) << "a line stuck at 1 gives that";
  EXPECT_FALSE(compares({0xAC, 0x32, 0x80, 0x50}, {})) << "nothing is compared";
  EXPECT_TRUE(compares({0xAC, 0x32, 0x80, 0x50}, {0xFF, 0xFF, 0x00, 0x00})) << "16 bits";
  EXPECT_FALSE(compares({0xAC, 0x32, 0x80, 0x50}, {0xFF, 0xFE, 0x00, 0x00})) << "15 bits";
  EXPECT_FALSE(compares({0xAC, 0x32, 0x80}, {0xFF, 0xFF, 0xFF})) << "too short";
  // After the bit of a device in BYPASS, which is not compared.
  EXPECT_TRUE(compares({0x56, 0x19, 0x40, 0x28, 0x00}, {0x7F, 0xFF, 0xFF, 0xFF, 0x80}));
}

}  // namespace
