// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/driver_log.h"

#include <utility>

namespace tool {

DriverLog::DriverLog(Sink sink) : sink_(std::move(sink)) {}

void DriverLog::Add(uint64_t time, std::string_view text, bool whole) {
  const size_t length = text.find_last_not_of("\r\n") + 1;
  if (length == text.size() && !whole) {
    joined_since_ = joined_.empty() ? time : joined_since_;
    joined_ += text;
    return;
  }
  Flush();
  sink_(time, text.substr(0, length));
}

void DriverLog::Flush() {
  if (!joined_.empty()) {
    sink_(joined_since_, joined_);
    joined_.clear();
  }
}

}  // namespace tool
