// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The seal of a file: a checksum in header bytes that the player ignores. Whoever hands the player
// a sealed file can tell before the first clock that it is not as it was made.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "tvb/bytes.h"

namespace tvb {

// Where the seal lies: a magic, then the CRC, least significant byte first.
constexpr size_t kSealOffset = 1;
constexpr std::array<uint8_t, 6> kSealMagic = {'S', 'E', 'A', 'L', 'E', 'D'};
constexpr size_t kSealSize = kSealMagic.size() + 4;
constexpr size_t kSealEnd = kSealOffset + kSealSize;

// The CRC-32 of IEEE 802.3 over any number of pieces.
class Crc32 {
 public:
  void Add(Bytes bytes);

  // Of all bytes so far.
  uint32_t value() const {
    return ~state_;
  }

 private:
  uint32_t state_ = 0xFFFFFFFF;  // reflected
};

enum class SealState {
  kNone,   // bytes 1 to 6 are not the magic
  kRight,  // the file is as it was sealed
  kWrong,  // it is not, or ends inside the seal
};

struct SealView {
  SealState state = SealState::kNone;
  uint32_t stored = 0;  // the CRC in the seal; bytes that the file does not have are 0
  uint32_t found = 0;   // the CRC of the file, which a seal should have
};

// Checks the seal of an image that is read from its beginning to its end, in any steps.
class SealReader {
 public:
  // The caller owns the image, which must outlive the reader.
  explicit SealReader(Bytes image);

  // Reads on to that offset; one before the last, or past the image's end, is allowed.
  void ReadTo(uint64_t offset);

  // Reads the rest.
  SealView Finish();

 private:
  Bytes image_;
  Crc32 crc_;
  size_t position_ = 0;
};

// True if the magic is there.
bool HasSeal(Bytes image);

// The seal of an image, right or wrong.
SealView SealOf(Bytes image);

// The bytes of a seal. `crc`: of the whole file, with its bytes of the seal as 0.
std::array<uint8_t, kSealSize> SealBytes(uint32_t crc);

// "sealed (CRC 1ABCE0BF)", "not sealed", "seal wrong (CRC 1ABCE0BF instead of 3BDE1F00)".
std::string SealText(const SealView &seal);

// The message for a file with a wrong seal.
std::string WrongSealText(const SealView &seal);

// Seals an image of kSealEnd bytes or more, whatever these bytes were, or makes them
// 0. A shorter one stays as it is.
void Seal(std::span<uint8_t> image);
void Unseal(std::span<uint8_t> image);

}  // namespace tvb
