// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Numbers for people: amounts have their thousands apart. What is a name rather than an amount (an
// offset, a record's, scan's or bit's number) and what programs read has not.
#pragma once

#include <cstdint>
#include <string>

namespace tool {

// "1,234,567".
std::string NumberText(uint64_t number);

// A real number in the fewest digits that tell it: "0.5", "1,000", "2,500.25".
std::string RealText(double number);

// A number of things: "1 scan", "1,234 scans".
std::string CountText(uint64_t number, const char *noun);

// A time as people read it: "1.234 s", "12.3 ms", "1:02:03 h".
std::string TimeText(uint64_t nanoseconds);

}  // namespace tool
