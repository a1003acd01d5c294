// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/encoding.h"

#include "tvb/error.h"

namespace tvb {
namespace {

#define TVB_ENCODING_ROW(mode, identifier, name) {Encoding::identifier, name, &codecs::identifier},
constexpr EncodingRow kRows[] = {TVB_ENCODINGS(TVB_ENCODING_ROW)};
#undef TVB_ENCODING_ROW

constexpr bool ModesAreIndices() {
  for (size_t index = 0; index < std::size(kRows); ++index) {
    if (static_cast<size_t>(kRows[index].encoding) != index) {
      return false;
    }
  }
  return true;
}
static_assert(ModesAreIndices(), "the rows of the encodings go by mode bytes, which leave no gap");

}  // namespace

std::span<const EncodingRow> Encodings() {
  return kRows;
}

const EncodingRow *FindEncoding(uint8_t mode) {
  return mode < std::size(kRows) ? &kRows[mode] : nullptr;
}

const char *EncodingName(uint8_t mode) {
  const EncodingRow *row = FindEncoding(mode);
  return row ? row->name : "unknown";
}

uint8_t ByteParameter(int64_t parameter) {
  if (parameter < 0 || parameter > 0xFF) {
    throw Error("the parameter of this encoding is a byte, 0 to 255, not " +
                std::to_string(parameter));
  }
  return static_cast<uint8_t>(parameter);
}

}  // namespace tvb
