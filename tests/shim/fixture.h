// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The start state of every host test and the checks at its end.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace shim {

// Any number of leaks, for tests that inject faults into code that leaks by design.
constexpr size_t kAnyLeaks = SIZE_MAX;

// Starts with the shim and the driver in their state at load. At the end it frees what the driver's
// globals hold, and fails the test if a guard was touched or if the driver has an unexpected number
// of live blocks: any but 0, unless AllowLeaks() set another.
class Test : public ::testing::Test {
 protected:
  Test();
  void TearDown() override;

  // The number of leaks expected at the end of the test: 0 (the default), or exactly `blocks`.
  void ExpectNoLeak();
  void AllowLeaks(size_t blocks);

 private:
  size_t leaks_ = 0;
};

// Restores the driver's globals and then the whole shim to their state at load.
void Reset();

// Restores every global that the driver shares with its callers to its value at load. Frees live
// blocks that the session's globals hold; a pointer to anything else is only dropped.
void ResetDriverGlobals();

}  // namespace shim
