// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel's allocator: __kmalloc, krealloc and kfree with a guard on every side.
//
// Each block lies between two red zones of different bytes, so that copying one into the other
// shows too; they are verified when the block is freed and when the test ends. A freed block is
// filled with a poison byte and kept in quarantine, verified when it leaves. krealloc always moves.
// Memory that nobody asked to be zeroed is filled with kFill. In a build with the address
// sanitizer, red zones and freed blocks also trap the access itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace shim {

// What memory holds that was asked for without __GFP_ZERO.
constexpr uint8_t kFill = 0xA5;

// The two sets of flags that the driver may ask with; any other is a violation.
constexpr uint32_t kGfpKernel = 0xCC0;
constexpr uint32_t kGfpKernelZero = 0xDC0;

// Kernel allocations end here. A larger request makes the kernel warn, so it is a violation to
// ask, besides being refused.
constexpr size_t kMaxBlock = size_t{4} << 20;

// One request of the driver, as it was made.
struct Allocation {
  void *pointer;  // null if it was refused
  size_t size;
  uint32_t flags;
  bool reallocated;  // made through krealloc
};

// Every request since Reset(), in order, the refused ones included.
const std::vector<Allocation> &Allocations();

// Blocks that are live now, of the driver and of the test, and their sizes summed.
size_t LiveBlocks();
size_t LiveBytes();

// Blocks that the driver asked for and that are live now: those of NewBlock() do not count.
size_t LiveRequests();

// Size of a live block as it was asked for. Anything else fails the test and gives 0.
size_t SizeOf(const void *pointer);

// Whether a block starts at `pointer` and is live.
bool IsLive(const void *pointer);

// How often null was freed since Reset(). The kernel takes it; a caller of the driver can see it.
size_t FreesOfNull();

// Makes the n-th request from now fail, once (1: the very next). 0: none.
void FailAllocation(uint64_t n);

// Makes the n-th request from now and all after it fail. 0: none.
void FailAllocationsFrom(uint64_t n);

// A live block, filled with kFill, that a test hands to the driver. It is not in Allocations() and
// is never counted as a leak: what the driver has not freed, the next Reset() does.
void *NewBlock(size_t size);

// A block of text.size() + 1 bytes with the text and a closing NUL, otherwise as NewBlock().
uint8_t *NewString(std::string_view text);

// Every breach of the allocator's rules since Reset(); each has already failed the test.
const std::vector<std::string> &Violations();

// Verifies the red zones of all live blocks and the poison of all quarantined ones now.
void VerifyMemory();

// Drops all blocks, records and planned failures without verifying anything.
void ResetAllocator();

}  // namespace shim
