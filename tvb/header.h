// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The header of a command file.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "tvb/bytes.h"
#include "tvb/number.h"

namespace tvb {

// The compression byte that says that data blocks are raw and have no mode byte. Any other value
// says that each has one.
constexpr uint8_t kPlainBlocks = 0xF2;

// What a header holds. Of all this the player looks at the compression byte alone.
struct FileHeader {
  std::array<uint8_t, 2> mark{};
  std::array<uint8_t, 8> stamp{};
  uint8_t compression = 0;
  uint32_t number = 0;

  static FileHeader Plain() {
    FileHeader header;
    header.compression = kPlainBlocks;
    return header;
  }
};

// Puts the header at the end of `file`.
void AppendHeader(Buffer &file, const FileHeader &header);

// The header as it stands in an image. With a fault it is no TVB file; what stands behind the fault
// is not filled in.
struct HeaderView {
  FileHeader header;
  NumberView number;
  uint64_t size = 0;  // in bytes; the first record starts there
  std::optional<Fault> fault;

  bool plain() const {
    return header.compression == kPlainBlocks;
  }
};

// Reads the header of `image`.
HeaderView ReadHeader(Bytes image);

}  // namespace tvb
