// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Text for people. Of numbers, amounts have thousands separators. Identifiers (an offset, the
// number of a record, scan or bit) and machine-readable output have none.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

// "1,234,567".
std::string NumberText(uint64_t number);

// A real number in the fewest digits that identify it: "0.5", "1,000", "2,500.25".
std::string RealText(double number);

// A count with its noun: "1 scan", "1,234 scans".
std::string CountText(uint64_t number, const char *noun);

// A duration for people: "1.234 s", "12.3 ms", "1:20 min", "1:02:03 h".
std::string TimeText(uint64_t nanoseconds);

// The text with its control characters as "\x1B", so that a file's name cannot command a terminal.
std::string PrintableText(std::string_view text);

}  // namespace tool
