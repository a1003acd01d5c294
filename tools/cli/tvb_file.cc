// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/tvb_file.h"

#include "tvb/reader.h"
#include "tvb/text.h"

namespace tool {

std::string TvbPlace(const std::string &file, uint64_t offset, uint64_t record) {
  std::string place = file + ": offset " + tvb::Hex(offset);
  return record == 0 ? place : place + " (record " + std::to_string(record) + ")";
}

TvbFile::TvbFile(const std::string &path)
    : file_(InputFile::OpenOrThrow(path)), header_(tvb::ReadHeader(image())) {
  if (header_.fault) {
    throw Failure(header_.fault->message, Place(header_.fault->offset));
  }
}

}  // namespace tool
