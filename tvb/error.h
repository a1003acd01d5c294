// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The one error of this library.
#pragma once

#include <stdexcept>
#include <string>

namespace tvb {

// Thrown for every use that no file could express or that no one can have meant. The message says
// what was wrong and what to do instead. Whatever threw it has written nothing: the file so far is
// whole and can be continued.
class Error : public std::invalid_argument {
 public:
  explicit Error(const std::string &message) : std::invalid_argument(message) {}
};

}  // namespace tvb
