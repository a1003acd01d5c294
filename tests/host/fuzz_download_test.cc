// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Spoiled and random files by the thousand, the same ones in every run. Whatever they hold, no
// foreign memory is touched (the image is guarded, the shim and the sanitizers watch the rest), the
// download ends with one of its codes, unloading frees the session, and the next good file plays.
#include <random>

#include "fuzz_budget.h"
#include "image.h"
#include "session.h"
#include "sweep.h"

namespace {

using bench::Bytes;
using sweep::Subject;

constexpr double kBudget = 300000;

class FuzzDownload : public shim::Test {
 protected:
  FuzzDownload() : good_(false) {
    AllowLeaks(shim::kAnyLeaks);
  }

  uint32_t Random(uint32_t below) {
    return static_cast<uint32_t>(random_() % below);
  }
  uint8_t RandomByte() {
    // Bytes that mean something are more likely than others.
    static constexpr uint8_t kMeaning[] = {'^', 1,   4,   5,  7,  9,  10,   11,   12,
                                           13,  14,  15,  16, 17, 18, 19,   20,   23,
                                           24,  '$', '%', 0,  2,  3,  0x7F, 0x80, 0xFF};
    return Random(2) == 0 ? kMeaning[Random(sizeof kMeaning)] : static_cast<uint8_t>(Random(256));
  }

  // Plays one file in a module that has just been loaded. Returns false if it could take too long.
  bool Play(const Bytes &file) {
    if (fuzz::Budget(file).cost() > kBudget) {
      return false;
    }
    shim::Reset();
    const s32 rc = good_.bench().Download(file);
    const shim::Message &last = shim::Messages().back();
    if (rc == 1) {
      EXPECT_EQ(last, session::Ended(0));
      ++successes_;
    } else {
      EXPECT_EQ(rc, 0);
      EXPECT_TRUE(last == session::Ended(-2) || last == session::Ended(-7) ||
                  last == session::Ended(-10) || last == session::Ended(-17))
          << ::testing::PrintToString(last);
      EXPECT_EQ(last == session::Ended(-17), bench::Said(session::VerifyFailed()));
    }
    ++played_;
    return true;
  }

  // Lengths of pads outlive everything and would displace the very first shifts of a good file, so
  // one that only clears them comes before it. A negative frequency is lower than any other and
  // stays for good.
  void ExpectRecovered() {
    if (static_cast<s64>(g_freq) < 0) {
      return;
    }
    EXPECT_EQ(good_.bench().Download(image::Join(
                  {image::Header(), image::Pad(image::kHir, 0), image::Pad(image::kTir, 0),
                   image::Pad(image::kHdr, 0), image::Pad(image::kTdr, 0)})),
              1);
    good_.Renew();
    EXPECT_EQ(good_.bench().Download(good_.file()), 1)
        << ::testing::PrintToString(shim::Messages());
    EXPECT_TRUE(good_.Programmed()) << ::testing::PrintToString(good_.bench().Scans());
  }

  void ExpectUnloaded() {
    cleanup_module();
    for (const u8 *held : {g_vector, g_tdr_vector, g_tir_vector, g_hdr_vector, g_hir_vector,
                           g_tdr_data, g_tir_data, g_hdr_data, g_hir_data, g_chip_idcode}) {
      EXPECT_EQ(held, nullptr);
    }
  }

  // Plays `files` files made by `make`; a failing one is named by its number and printed.
  template <typename Make>
  void PlayMany(int files, Make make) {
    for (int number = 0; number < files; ++number) {
      random_.seed(static_cast<uint32_t>(number));
      const Bytes file = make();
      if (Play(file) && number % 8 == 0) {
        ExpectRecovered();
      }
      ExpectUnloaded();
      ASSERT_FALSE(HasFailure()) << "file " << number << ": " << ::testing::PrintToString(file);
    }
    EXPECT_GT(played_, files * 9 / 10) << "too few are within the budget";
  }

  // One change to a file, which keeps at least one byte.
  void Spoil(Bytes &file) {
    if (file.size() < 22) {
      return;
    }
    const size_t at = Random(static_cast<uint32_t>(file.size()));
    const auto place = file.begin() + static_cast<long>(at);
    const size_t run = std::min<size_t>(1 + Random(20), file.size() - at);
    switch (Random(7)) {
      case 0:
        file[at] = static_cast<uint8_t>(file[at] ^ 1u << Random(8));
        break;
      case 1:
        file[at] = RandomByte();
        break;
      case 2:
        file.insert(place, RandomByte());
        break;
      case 3:
        file.erase(place, place + static_cast<long>(run));
        break;
      case 4: {
        const Bytes copy(place, place + static_cast<long>(run));
        const size_t to = Random(static_cast<uint32_t>(file.size()));
        file.insert(file.begin() + static_cast<long>(to), copy.begin(), copy.end());
        break;
      }
      case 5:
        file.resize(at + 1);
        break;
      default:
        std::fill(place, place + static_cast<long>(run), RandomByte());
    }
  }

  Subject good_;
  std::mt19937 random_;
  int played_ = 0;
  int successes_ = 0;
};

TEST_F(FuzzDownload, SpoiledGoodFiles) {
  const Bytes plain = Subject(true).file();
  const Bytes &encoded = good_.file();
  PlayMany(4000, [&] {
    Bytes file = Random(2) == 0 ? plain : encoded;
    for (uint32_t changes = 1 + Random(4); changes > 0; --changes) {
      Spoil(file);
    }
    return file;
  });
  EXPECT_GT(successes_, 50) << "some changes do no harm";
}

TEST_F(FuzzDownload, RandomBytesBehindAHeader) {
  PlayMany(4000, [&] {
    Bytes file = image::Header(Random(2) == 0 ? image::kRaw : static_cast<uint8_t>(Random(256)));
    for (uint32_t length = Random(120); length > 0; --length) {
      file.push_back(RandomByte());
    }
    return file;
  });
}

TEST_F(FuzzDownload, RandomBytes) {
  PlayMany(1000, [&] {
    Bytes file(1 + Random(60));
    for (uint8_t &byte : file) {
      byte = RandomByte();
    }
    file[0] = 'a';
    return file;
  });
}

// Records that are whole, with bodies of random content.
TEST_F(FuzzDownload, RandomRecords) {
  static constexpr uint8_t kOpcodes[] = {1, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 19, '$', '%'};
  const auto bytes = [&](uint32_t count) {
    Bytes run(count);
    for (uint8_t &byte : run) {
      byte = static_cast<uint8_t>(Random(256));
    }
    return run;
  };
  const auto body = [&](uint8_t opcode, bool modes) -> Bytes {
    const uint32_t bits = Random(40);
    const uint32_t count = (bits + 7) / 8;
    if (opcode == image::kRunTest) {
      return image::Join(
          {{1}, image::CycleField(Random(60)), image::WaitField(Random(60)), {RandomByte()}});
    }
    if (opcode == image::kFrequency || opcode == image::kLoop) {
      return image::Number(Random(opcode == image::kLoop ? 5 : 2000000));
    }
    if (opcode >= 9 && opcode <= 12) {
      return image::PadBody(bits, bytes(count));
    }
    if (opcode != image::kSdr && opcode != image::kSir) {
      return {};
    }
    Bytes fields;
    for (uint32_t left = Random(4); left > 0; --left) {
      const Bytes mode = modes ? Bytes{static_cast<uint8_t>(Random(6))} : Bytes{};
      fields = image::Join({fields, {static_cast<uint8_t>(15 + Random(3))}, mode, bytes(count)});
    }
    return image::ShiftBody(bits, fields);
  };
  PlayMany(4000, [&] {
    const bool modes = Random(2) == 0;
    Bytes file = image::Header(modes ? 0 : image::kRaw);
    for (uint32_t left = 1 + Random(12); left > 0; --left) {
      const uint8_t opcode = kOpcodes[Random(sizeof kOpcodes)];
      file = image::Join({file, image::Record(opcode, body(opcode, modes))});
    }
    return file;
  });
  EXPECT_GT(successes_, 1000);
}

}  // namespace
