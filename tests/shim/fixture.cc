// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "shim/fixture.h"

#include "shim/allocator.h"
#include "shim/clock.h"
#include "shim/files.h"
#include "shim/framework.h"
#include "shim/messages.h"

namespace shim {

Test::Test() {
  Reset();
}

void Test::TearDown() {
  ResetDriverGlobals();
  if (leaks_ != kAnyLeaks) {
    EXPECT_EQ(LiveRequests(), leaks_) << "blocks of the driver that nothing holds any more";
  }
  VerifyMemory();
}

void Test::ExpectNoLeak() {
  leaks_ = 0;
}

void Test::AllowLeaks(size_t blocks) {
  leaks_ = blocks;
}

void Reset() {
  ResetDriverGlobals();
  ResetAllocator();
  ResetMessages();
  ResetClock();
  ResetFiles();
  ResetFramework();
}

}  // namespace shim
