// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What every host test starts from and is held to at its end.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace shim {

// Any number of leaks, for tests that sweep faults through code that leaks by design.
constexpr size_t kAnyLeaks = SIZE_MAX;

// Starts with the shim and the driver as they are at load. At the end it frees what the driver's
// globals hold and fails the test if any guard was touched, or if the number of the driver's blocks
// that are still live is not the one expected: 0, unless AllowLeaks() said otherwise.
class Test : public ::testing::Test {
 protected:
  Test();
  void TearDown() override;

  // The leaks expected at the end of the test: none (the default), or exactly `blocks`.
  void ExpectNoLeak();
  void AllowLeaks(size_t blocks);

 private:
  size_t leaks_ = 0;
};

// Brings the driver's globals and then the whole shim to their state at load.
void Reset();

// Brings every global that the driver shares with its callers to its value at load. Live blocks
// that the session's globals hold are freed; a pointer to anything else is only dropped.
void ResetDriverGlobals();

}  // namespace shim
