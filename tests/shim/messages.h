// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The two channels on which the driver reports: the kernel log (printk) and the log module
// (drv_log_record). Every call is one message, kept as formatted text, in one sequence over both
// channels.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace shim {

enum class Channel { kPrintk, kLog };

struct Message {
  Channel channel;
  uint32_t module, level, flag;  // all 0 for the kernel log
  std::string text;
};

bool operator==(const Message &a, const Message &b);
void PrintTo(const Message &message, std::ostream *out);

// Every message since Reset() or ClearMessages().
const std::vector<Message> &Messages();
void ClearMessages();

// A kernel log message, and a log module message with flag 0, to compare with.
Message Printk(std::string text);
Message Log(uint32_t module, uint32_t level, std::string text);

// Calls `observer` for each message after it was stored; an empty one removes it.
void OnMessage(std::function<void(const Message &)> observer);

void ResetMessages();

}  // namespace shim
