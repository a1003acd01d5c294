// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the tests of the engine have in common: a board whose lines are selected, and short ways to
// write vectors and pin calls down.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "host.h"
#include "shim.h"

class EngineTest : public shim::Test {
 protected:
  EngineTest() {
    pins.Select();
  }

  shim::Pins pins;
};

// Pin calls of a number of equal periods, e.g. {{2, "K0 M1 K1"}, {1, "K0 M0 K1"}}.
inline std::string Periods(std::initializer_list<std::pair<int, const char *>> periods) {
  std::string text;
  for (const auto &[count, calls] : periods) {
    for (int i = 0; i < count; ++i) {
      text += (text.empty() ? "" : " ") + std::string(calls);
    }
  }
  return text;
}

// A vector as text: "2A 2A 08".
inline std::string VectorText(const uint8_t *vector) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string text;
  for (; vector != nullptr && *vector != 0; ++vector) {
    text += text.empty() ? "" : " ";
    text += kHex[*vector >> 4];
    text += kHex[*vector & 15];
  }
  return text;
}

// The same of the vector that is being built.
inline std::string VectorText() {
  return VectorText(g_vector);
}

// A string of `count` equal characters as VectorText() gives it.
inline std::string Repeated(int count, const std::string &item) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += (text.empty() ? "" : " ") + item;
  }
  return text;
}

inline std::string String(const uint8_t *text) {
  return reinterpret_cast<const char *>(text);
}

// The calls of the reset that opens every download.
inline std::string ResetCalls() {
  return Periods({{1, "K0 I0 M1 K1"}, {9, "K0 I0 K1"}, {1, "K0 I0 M0 K1"}});
}

// The sizes of all requests since the shim's reset, in order.
inline std::vector<size_t> RequestedSizes() {
  std::vector<size_t> sizes;
  for (const shim::Allocation &allocation : shim::Allocations()) {
    sizes.push_back(allocation.size);
  }
  return sizes;
}

using Messages = std::vector<shim::Message>;
