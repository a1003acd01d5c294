// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tool {
namespace {

// Puts commas between the thousands of a number's leading digits.
std::string Grouped(std::string number, size_t digits) {
  for (size_t place = digits; place > 3; place -= 3) {
    number.insert(place - 3, 1, ',');
  }
  return number;
}

}  // namespace

std::string NumberText(uint64_t number) {
  std::string text = std::to_string(number);
  const size_t digits = text.size();
  return Grouped(std::move(text), digits);
}

std::string RealText(double number) {
  std::string text = fmt::format("{}", number);
  const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  return Grouped(std::move(text), digits);
}

std::string CountText(uint64_t number, const char *noun) {
  std::string text = NumberText(number) + ' ' + noun;
  if (number != 1) {
    text += 's';
  }
  return text;
}

std::string TimeText(uint64_t nanoseconds) {
  const double seconds = static_cast<double>(nanoseconds) / 1e9;
  if (nanoseconds < 1000000) {
    return fmt::format("{:.1f} us", seconds * 1e6);
  }
  if (nanoseconds < 1000000000) {
    return fmt::format("{:.3f} ms", seconds * 1e3);
  }
  if (seconds < 60) {
    return fmt::format("{:.3f} s", seconds);
  }
  const uint64_t whole = (nanoseconds + 500000000) / 1000000000;
  if (whole < 3600) {
    return fmt::format("{}:{:02} min", whole / 60, whole % 60);
  }
  return fmt::format("{}:{:02}:{:02} h", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string PrintableText(std::string_view text) {
  std::string printable;
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x20 || code == 0x7F) {
      printable += fmt::format("\\x{:02X}", code);
    } else {
      printable += c;
    }
  }
  return printable;
}

}  // namespace tool
