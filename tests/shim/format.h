// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The kernel's message formatting, as far as the driver uses it.
#pragma once

#include <cstdarg>
#include <string>

namespace shim {

// Formats as the kernel does, for the conversions %s %c %d %8d %u %lld %02x and %02X. Any other
// conversion, and a null format or string, fails the test: look up what the kernel does with a new
// conversion before adding it here.
std::string Format(const char *format, va_list arguments);

}  // namespace shim
