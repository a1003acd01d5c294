// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The only exception of this library.
#pragma once

#include <stdexcept>
#include <string>

namespace tvb {

// Thrown for every use that no file can express or that cannot be intended. The message says what
// was wrong and what to do instead. The function that throws has written nothing: the file so far
// is intact and can be continued.
class Error : public std::invalid_argument {
 public:
  explicit Error(const std::string &message) : std::invalid_argument(message) {}
};

}  // namespace tvb
