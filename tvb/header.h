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

// The compression byte of a file whose data blocks are raw and have no mode byte. With any other
// value each block has one.
constexpr uint8_t kPlainBlocks = 0xF2;

// The contents of a header. The player uses only the compression byte.
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

// Appends the header to `file`.
void AppendHeader(Buffer &file, const FileHeader &header);

// The header of an image. With a fault, the image is not a TVB file and the members after the fault
// are not filled in.
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
