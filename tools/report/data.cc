// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/report/data.h"

#include <span>

#include "tools/cli/bit_row.h"

namespace tool {
namespace {

constexpr size_t kKeptDigits = kMaxReportDigits / 2;
static_assert(kKeptDigits % 2 == 0, "whole bytes");

// The last digits, those of the bits shifted first.
std::string LastDigits(std::span<const uint8_t> bytes) {
  return BitRow::FromFile(bytes, 4 * kKeptDigits).Hex();
}

// A last byte may hold one digit or two, so one more digit is read than is kept.
std::string FirstDigits(std::span<const uint8_t> bytes, uint64_t bits) {
  const uint64_t digits = (bits + 3) / 4;
  const uint64_t skipped = (digits - kKeptDigits) / 2;  // bytes
  return BitRow::FromFile(bytes.subspan(skipped), bits - 8 * skipped).Hex().substr(0, kKeptDigits);
}

}  // namespace

uint32_t ReportTexts::Add(const std::string &text) {
  const auto [place, is_new] = numbers_.try_emplace(text, static_cast<uint32_t>(texts_.size()));
  if (is_new) {
    texts_.push_back(text);
  }
  return place->second;
}

std::string AbbreviatedHex(const std::vector<uint8_t> &bytes, uint64_t bits) {
  if ((bits + 3) / 4 <= kMaxReportDigits) {
    return BitRow::FromFile(bytes, bits).Hex();
  }
  return FirstDigits(bytes, bits) + "\u2026" + LastDigits(bytes);
}

}  // namespace tool
