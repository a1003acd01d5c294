// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The one error of this library.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace svf {

// Thrown for text that is no SVF. The message says what was expected and what to do; the offset (in
// bytes from the start of the text) says where. LineIndex makes line and column of it.
class Error : public std::runtime_error {
 public:
  Error(size_t offset, const std::string &message) : std::runtime_error(message), offset_(offset) {}

  size_t offset() const {
    return offset_;
  }

 private:
  size_t offset_;
};

}  // namespace svf
