// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "shim/allocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <unordered_map>

#if M7_SANITIZED
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

namespace shim {
namespace {

constexpr size_t kZone = 64;
constexpr uint8_t kLowerZoneByte = 0xBD;
constexpr uint8_t kUpperZoneByte = 0xDB;
constexpr uint8_t kFreedByte = 0x6B;
constexpr size_t kQuarantineBytes = size_t{32} << 20;
constexpr size_t kQuarantineBlocks = 8192;

struct Block {
  uint8_t *base;  // start of the lower red zone
  size_t size;    // of the block between the zones
  bool requested;

  uint8_t *data() const {
    return base + kZone;
  }
  size_t whole() const {
    return size + 2 * kZone;
  }
};

struct State {
  std::unordered_map<const void *, Block> live;
  std::deque<Block> quarantine;
  size_t quarantine_bytes = 0;
  size_t live_bytes = 0;
  size_t live_requests = 0;
  std::vector<Allocation> requests;
  std::vector<std::string> violations;
  size_t frees_of_null = 0;
  uint64_t requests_from_plan = 0;
  uint64_t fail_at = 0;
  uint64_t fail_from = 0;
};

State &TheState() {
  // Never destroyed: the last test's blocks would count as leaks of the program.
  static State &state = *new State;
  return state;
}

void Violation(const std::string &text) {
  TheState().violations.push_back(text);
  ADD_FAILURE() << "memory: " << text;
}

std::string Describe(const Block &block) {
  return "block of " + std::to_string(block.size) + " bytes";
}

bool AllBytes(const uint8_t *bytes, size_t count, uint8_t value) {
  return std::all_of(bytes, bytes + count, [value](uint8_t byte) { return byte == value; });
}

void Guard(const Block &block) {
  ASAN_POISON_MEMORY_REGION(block.base, kZone);
  ASAN_POISON_MEMORY_REGION(block.data() + block.size, kZone);
}

void Unguard(const Block &block) {
  ASAN_UNPOISON_MEMORY_REGION(block.base, block.whole());
}

void VerifyZones(const Block &block) {
  Unguard(block);
  const bool below = AllBytes(block.base, kZone, kLowerZoneByte);
  const bool above = AllBytes(block.data() + block.size, kZone, kUpperZoneByte);
  if (!below) {
    Violation("write before the " + Describe(block));
  }
  if (!above) {
    Violation("write past the " + Describe(block));
  }
}

void *NewLiveBlock(size_t size, uint8_t fill, bool requested) {
  State &state = TheState();
  Block block{static_cast<uint8_t *>(std::malloc(size + 2 * kZone)), size, requested};
  if (block.base == nullptr) {
    std::abort();
  }
  std::memset(block.base, kLowerZoneByte, kZone);
  std::memset(block.data(), fill, size);
  std::memset(block.data() + size, kUpperZoneByte, kZone);
  Guard(block);
  state.live.emplace(block.data(), block);
  state.live_bytes += size;
  state.live_requests += requested ? 1 : 0;
  return block.data();
}

void VerifyFreed(const Block &block) {
  VerifyZones(block);
  if (!AllBytes(block.data(), block.size, kFreedByte)) {
    Violation("write into the freed " + Describe(block));
  }
}

void ReleaseOldest() {
  State &state = TheState();
  const Block block = state.quarantine.front();
  state.quarantine.pop_front();
  state.quarantine_bytes -= block.size;
  VerifyFreed(block);
  std::free(block.base);
}

void Quarantine(const Block &block) {
  State &state = TheState();
  std::memset(block.data(), kFreedByte, block.size);
  ASAN_POISON_MEMORY_REGION(block.base, block.whole());
  state.quarantine.push_back(block);
  state.quarantine_bytes += block.size;
  while (state.quarantine_bytes > kQuarantineBytes || state.quarantine.size() > kQuarantineBlocks) {
    ReleaseOldest();
  }
}

bool PlannedToFail() {
  State &state = TheState();
  const uint64_t n = ++state.requests_from_plan;
  return n == state.fail_at || (state.fail_from != 0 && n >= state.fail_from);
}

bool Permitted(size_t size, uint32_t flags) {
  bool permitted = true;
  if (flags != kGfpKernel && flags != kGfpKernelZero) {
    Violation("request with the flags " + std::to_string(flags));
    permitted = false;
  }
  if (size > kMaxBlock) {
    Violation("request of " + std::to_string(size) + " bytes, more than a kernel gives");
    permitted = false;
  }
  return permitted;
}

void *Request(size_t size, uint32_t flags, bool reallocated) {
  void *pointer = nullptr;
  const bool fails = PlannedToFail();
  if (Permitted(size, flags) && !fails) {
    pointer = NewLiveBlock(size, flags == kGfpKernelZero ? 0 : kFill, true);
  }
  TheState().requests.push_back({pointer, size, flags, reallocated});
  return pointer;
}

const Block *Find(const void *pointer) {
  const auto &live = TheState().live;
  const auto found = live.find(pointer);
  return found == live.end() ? nullptr : &found->second;
}

bool IsFreed(const void *pointer) {
  const auto &quarantine = TheState().quarantine;
  return std::any_of(quarantine.begin(), quarantine.end(),
                     [pointer](const Block &block) { return block.data() == pointer; });
}

void Free(const void *pointer) {
  State &state = TheState();
  const Block *found = Find(pointer);
  if (found == nullptr) {
    Violation(IsFreed(pointer) ? "block freed twice" : "free of what is no block");
    return;
  }
  const Block block = *found;
  state.live.erase(pointer);
  state.live_bytes -= block.size;
  state.live_requests -= block.requested ? 1 : 0;
  VerifyZones(block);
  Quarantine(block);
}

}  // namespace

const std::vector<Allocation> &Allocations() {
  return TheState().requests;
}

size_t LiveBlocks() {
  return TheState().live.size();
}

size_t LiveBytes() {
  return TheState().live_bytes;
}

size_t LiveRequests() {
  return TheState().live_requests;
}

size_t SizeOf(const void *pointer) {
  const Block *block = Find(pointer);
  if (block == nullptr) {
    Violation("size asked of what is no live block");
    return 0;
  }
  return block->size;
}

bool IsLive(const void *pointer) {
  return Find(pointer) != nullptr;
}

size_t FreesOfNull() {
  return TheState().frees_of_null;
}

void FailAllocation(uint64_t n) {
  State &state = TheState();
  state.requests_from_plan = 0;
  state.fail_at = n;
  state.fail_from = 0;
}

void FailAllocationsFrom(uint64_t n) {
  State &state = TheState();
  state.requests_from_plan = 0;
  state.fail_at = 0;
  state.fail_from = n;
}

void *NewBlock(size_t size) {
  return NewLiveBlock(size, kFill, false);
}

uint8_t *NewString(std::string_view text) {
  uint8_t *block = static_cast<uint8_t *>(NewBlock(text.size() + 1));
  std::copy(text.begin(), text.end(), block);
  block[text.size()] = 0;
  return block;
}

const std::vector<std::string> &Violations() {
  return TheState().violations;
}

void VerifyMemory() {
  for (const auto &entry : TheState().live) {
    VerifyZones(entry.second);
    Guard(entry.second);
  }
  for (const Block &block : TheState().quarantine) {
    VerifyFreed(block);
    ASAN_POISON_MEMORY_REGION(block.base, block.whole());
  }
}

void ResetAllocator() {
  State &state = TheState();
  for (const auto &entry : state.live) {
    Unguard(entry.second);
    std::free(entry.second.base);
  }
  for (const Block &block : state.quarantine) {
    Unguard(block);
    std::free(block.base);
  }
  state = State();
}

}  // namespace shim

extern "C" {

void *__kmalloc(size_t size, uint32_t flags) {
  return shim::Request(size, flags, false);
}

void *krealloc(const void *pointer, size_t size, uint32_t flags) {
  void *moved = shim::Request(size, flags, true);
  if (pointer == nullptr || moved == nullptr) {
    return moved;
  }
  if (!shim::IsLive(pointer)) {
    shim::Violation("krealloc of what is no live block");
    return moved;
  }
  std::memcpy(moved, pointer, std::min(size, shim::SizeOf(pointer)));
  shim::Free(pointer);
  return moved;
}

void kfree(const void *pointer) {
  if (pointer != nullptr) {
    shim::Free(pointer);
  } else {
    ++shim::TheState().frees_of_null;
  }
}

}  // extern "C"
