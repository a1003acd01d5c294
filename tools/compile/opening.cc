// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/opening.h"

#include <fmt/format.h>

#include <charconv>

#include "tools/compile/joined_scan.h"

namespace tool {

std::optional<RequiredIdcode> ParseIdcode(std::string_view text) {
  RequiredIdcode idcode;
  const auto read = [&text](uint32_t &value) {
    if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
      text.remove_prefix(2);
    }
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    text.remove_prefix(static_cast<size_t>(result.ptr - text.data()));
    return result.ec == std::errc();
  };
  if (!read(idcode.value)) {
    return std::nullopt;
  }
  if (!text.empty()) {
    const bool slash = text.front() == '/';
    text.remove_prefix(1);
    if (!slash || !read(idcode.mask) || !text.empty()) {
      return std::nullopt;
    }
  }
  return idcode.mask != 0 ? std::optional(idcode) : std::nullopt;
}

std::string CheckIdcode(const std::string &text) {
  return ParseIdcode(text) ? ""
                           : fmt::format(
                                 "expected IDCODE or IDCODE/MASK, hexadecimal numbers of 32 "
                                 "bits, as in 0A014C35/0FFFFFFF; found '{}'",
                                 text);
}

std::optional<tvb::ChainPlace> PlaceToldBy(const tvb::Shift &scan) {
  if (scan.bits % tvb::kInstructionBits != 0 || scan.tdi.size() < 2 || !scan.mask.empty()) {
    return std::nullopt;
  }
  const tvb::ChainPlace place = tvb::PlaceToldBy(scan.tdi);
  return place.devices() == scan.tdi.size() ? std::optional(place) : std::nullopt;
}

std::optional<tvb::ChainPlace> PlaceOfPads(const tvb::PadBits &pads) {
  if (pads.hdr != 0 || pads.tdr != 0) {
    return tvb::ChainPlace{pads.tdr, pads.hdr};
  }
  if (pads.hir != 0 || pads.tir != 0) {
    return tvb::ChainPlace{pads.tir / tvb::kInstructionBits, pads.hir / tvb::kInstructionBits};
  }
  return std::nullopt;
}

// A device in BYPASS is one bit of the data register.
void CompareIdcode(RecordWriter &writer, const tvb::ChainPlace &place, uint8_t instruction,
                   const RequiredIdcode &idcode) {
  const tvb::Buffer instructions = tvb::ChainInstructions(place, instruction);
  tvb::Shift scan;
  scan.bits = static_cast<uint32_t>(tvb::kInstructionBits * place.devices());
  scan.tdi = instructions;
  writer.Scan(tvb::kSir, scan);

  BitQueue tdi;
  BitQueue tdo;
  BitQueue mask;
  const auto append = [&](uint32_t expected, uint32_t compared) {
    for (int byte = 0; byte < 4; ++byte) {
      tdo.Append(tvb::Buffer{tvb::InstructionByte(static_cast<uint8_t>(expected >> 8 * byte))}, 8);
      mask.Append(tvb::Buffer{tvb::InstructionByte(static_cast<uint8_t>(compared >> 8 * byte))}, 8);
    }
  };
  tdo.AppendZeros(place.after);
  mask.AppendZeros(place.after);
  append(idcode.value & idcode.mask, idcode.mask);
  tdo.AppendZeros(place.before);
  mask.AppendZeros(place.before);
  scan.bits = place.after + 32 + place.before;
  tdi.AppendZeros(scan.bits);
  scan.tdi = tdi.bytes();
  scan.tdo = tdo.bytes();
  scan.mask = mask.bytes();
  scan.free_tdo = true;
  writer.Scan(tvb::kSdr, scan);
}

}  // namespace tool
