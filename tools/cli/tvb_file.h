// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A TVB file that a command reads.
#pragma once

#include <cstdint>
#include <string>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tvb/bytes.h"
#include "tvb/record_view.h"

namespace tool {

// The place that a message about a TVB file is about: "FILE: offset 0x1A2 (record 7)"; `record` 0
// for what belongs to none.
std::string TvbPlace(const std::string &file, uint64_t offset, uint64_t record = 0);

// An open file whose header is one.
class TvbFile {
 public:
  // Throws Failure if the file cannot be read or has no TVB header.
  explicit TvbFile(const std::string &path);

  // Good as long as this object.
  tvb::Bytes image() const {
    return {file_.data(), file_.size()};
  }
  const tvb::HeaderView &header() const {
    return header_;
  }
  const std::string &name() const {
    return file_.name();
  }
  std::string Place(uint64_t offset, uint64_t record = 0) const {
    return TvbPlace(name(), offset, record);
  }

  // As InputFile::Forget().
  void Forget(uint64_t before) {
    file_.Forget(static_cast<size_t>(before));
  }

 private:
  InputFile file_;
  tvb::HeaderView header_;
};

}  // namespace tool
