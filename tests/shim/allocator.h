// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel's allocator, __kmalloc, krealloc and kfree, with guards on every side.
//
// Each block lies between two red zones of different bytes, so that copying one over the other is
// detected too; they are verified when the block is freed and when the test ends. A freed block is
// filled with a poison byte and kept in quarantine; the poison is verified when the block leaves.
// krealloc always moves. Memory not requested zeroed is filled with kFill. In a build with the
// address sanitizer, any access to a red zone or a freed block also traps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace shim {

// The content of memory requested without __GFP_ZERO.
constexpr uint8_t kFill = 0xA5;

// The two sets of flags that the driver may pass; any other is a violation.
constexpr uint32_t kGfpKernel = 0xCC0;
constexpr uint32_t kGfpKernelZero = 0xDC0;

// The largest kernel allocation. A larger request makes the kernel warn, so it is a violation
// besides being refused.
constexpr size_t kMaxBlock = size_t{4} << 20;

// One request of the driver.
struct Allocation {
  void *pointer;  // null if refused
  size_t size;
  uint32_t flags;
  bool reallocated;  // requested by krealloc
};

// Every request since Reset(), in order, including refused ones.
const std::vector<Allocation> &Allocations();

// The number of live blocks, the driver's and the test's, and their total size.
size_t LiveBlocks();
size_t LiveBytes();

// The number of live blocks that the driver requested; those of NewBlock() do not count.
size_t LiveRequests();

// The requested size of a live block. Any other pointer fails the test and gives 0.
size_t SizeOf(const void *pointer);

// Whether a live block starts at `pointer`.
bool IsLive(const void *pointer);

// How often null was freed since Reset(). The kernel allows it, but a caller of the driver can see
// it.
size_t FreesOfNull();

// Makes the n-th request from now fail, once (1: the next one). 0: none.
void FailAllocation(uint64_t n);

// Makes the n-th request from now and all later ones fail. 0: none.
void FailAllocationsFrom(uint64_t n);

// A live block, filled with kFill, for a test to hand to the driver. It is not in Allocations() and
// never counts as a leak: the next Reset() frees it unless the driver has.
void *NewBlock(size_t size);

// A block of text.size() + 1 bytes with the text and a closing NUL; otherwise as NewBlock().
uint8_t *NewString(std::string_view text);

// Every violation of the allocator's rules since Reset(); each has already failed the test.
const std::vector<std::string> &Violations();

// Verifies the red zones of all live blocks and the poison of all quarantined blocks now.
void VerifyMemory();

// Drops all blocks, records and planned failures without verifying anything.
void ResetAllocator();

}  // namespace shim
