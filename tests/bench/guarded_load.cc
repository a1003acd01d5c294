// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// guarded_load NAME: does a small piece of work, always the same, for tests/bench/guard to count
// the instructions in it.
#include <fmt/core.h>

#include <cstring>
#include <exception>
#include <random>
#include <stdexcept>
#include <string>

#include "demo/part_file.h"
#include "pins.h"
#include "sim/host.h"
#include "tests/board/framework.h"
#include "tvb/block.h"

namespace {

constexpr u32 kScans = 50;

void RequireDone(bool done) {
  if (!done) {
    throw std::runtime_error("it did not end as it should");
  }
}

std::vector<u8> SomeBytes(size_t size) {
  std::mt19937 random(1);
  std::vector<u8> bytes(size);
  for (size_t i = 0; i < size; ++i) {
    const u8 value = static_cast<u8>(random());
    bytes[i] = i / 32 % 4 == 3 ? 0xFF : i % 512 >= 256 ? bytes[i - 256] : value;
  }
  return bytes;
}

// A data scan of so many bits: without a mask, with one, with a capture.
struct Scan {
  explicit Scan(u32 length) : bits(length), tdi(SomeBytes(bits / 8 + 1)), zeros(bits / 8 + 1) {
    ones.resize(bits / 8 + 1, 0xFF);
    ones.back() = 0;
    g_tvb_cpld_cfg = &bench::kPins;
    g_tvb_jtag_funcs = &bench::kIdle;
  }
  u32 bits;
  std::vector<u8> tdi, zeros, ones;
};

void Build(u32 bits) {
  const Scan scan(bits);
  for (u32 i = 0; i < kScans; ++i) {
    Quorlan_MemSet(bits + 5);
    Quorlan_SvfShiftExit(static_cast<s32>(bits), scan.tdi.data(), scan.zeros.data(), KIND_DATA);
  }
  RequireDone(m7_vector_length() == bits);
}

void Shift(u32 bits) {
  const Scan scan(bits);
  for (u32 i = 0; i < kScans; ++i) {
    Quorlan_SvfShiftDataRegister(bits, scan.tdi.data(), nullptr, nullptr);
  }
  RequireDone(m7_vector_length() == bits + 5);
}

void Compare(u32 bits) {
  const Scan scan(bits);
  for (u32 i = 0; i < kScans; ++i) {
    Quorlan_SvfShiftDataRegister(bits, scan.tdi.data(), scan.zeros.data(), scan.ones.data());
  }
  RequireDone(g_status == 1);
}

void Capture(u32 bits) {
  const Scan scan(bits);
  for (u32 i = 0; i < kScans; ++i) {
    u8 *levels =
        Quorlan_SvfShiftDataRegisterAndReadTDO(bits, scan.tdi.data(), nullptr, scan.ones.data());
    RequireDone(levels && std::strlen(reinterpret_cast<const char *>(levels)) == bits);
    kfree(levels);
  }
}

void KeepCycles(u32 cycles) {
  g_tvb_cpld_cfg = &bench::kPins;
  g_tvb_jtag_funcs = &bench::kIdle;
  Quorlan_KeepCycle(static_cast<s32>(cycles));
}

// By the encoding's mode byte.
void Decode(u32 mode) {
  constexpr u32 kSize = 16384;
  const std::vector<u8> data = SomeBytes(kSize);
  const tvb::Buffer block =
      tvb::EncodeBlock(data, tvb::BlockChoice::As(static_cast<tvb::Encoding>(mode)));
  g_tvb_buffer = block.data();
  g_read_limit = block.size();
  u8 *decoded = Quorlan_ProcessData(kSize);
  RequireDone(decoded && std::memcmp(decoded, data.data(), kSize) == 0);
  kfree(decoded);
}

// The driver's records, the framework's calls and the simulated chain's edges.
void Download(u32 rows) {
  const demo::Part part = {0x0A014C35, rows, 128, 100, 20};
  sim::Chain chain(fmt::format("idcode=0x0A014C35,part={}x128,erase=100,program=20", rows));
  RequireDone(framework_serve(chain.get()) == 0);
  const tvb::Buffer image = demo::PartFile({0, 0}, part).Whole(demo::RowsOfText(part, "counted"));
  RequireDone(framework_download(image.data(), static_cast<u32>(image.size())) == 1);
}

struct Load {
  const char *name;
  void (*run)(u32);
  u32 argument;
};

constexpr Load kLoads[] = {
    {"build-8", Build, 8},           {"build-4096", Build, 4096},
    {"shift-8", Shift, 8},           {"shift-64", Shift, 64},
    {"shift-4096", Shift, 4096},     {"compare-4096", Compare, 4096},
    {"capture-4096", Capture, 4096}, {"run-test", KeepCycles, 100000},
    {"decode-raw", Decode, 0},       {"decode-run-length", Decode, 1},
    {"decode-nibble", Decode, 2},    {"decode-bit-coding", Decode, 3},
    {"decode-lzw", Decode, 4},       {"download", Download, 32},
};

}  // namespace

int main(int argc, char **argv) {
  try {
    for (const Load &load : kLoads) {
      if (argc == 1) {
        fmt::print("{}\n", load.name);
      } else if (std::strcmp(argv[1], load.name) == 0) {
        load.run(load.argument);
        return 0;
      }
    }
  } catch (const std::exception &error) {
    fmt::print(stderr, "guarded_load: {}: {}\n", argv[1], error.what());
  }
  return argc == 1 ? 0 : 1;
}
