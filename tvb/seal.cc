// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/seal.h"

#include <algorithm>

namespace tvb {
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320;

// Table k has the effect of each byte when k more have followed it, so that eight bytes are taken
// at once.
using Tables = std::array<std::array<uint32_t, 256>, 8>;

constexpr Tables MakeTables() {
  Tables tables{};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit) {
      crc = crc >> 1 ^ (crc & 1 ? kPolynomial : 0);
    }
    tables[0][byte] = crc;
  }
  for (size_t after = 1; after < tables.size(); ++after) {
    for (size_t byte = 0; byte < 256; ++byte) {
      const uint32_t crc = tables[after - 1][byte];
      tables[after][byte] = crc >> 8 ^ tables[0][crc & 0xFF];
    }
  }
  return tables;
}

constexpr Tables kTables = MakeTables();

// Four bytes, least significant first.
uint32_t Word(const uint8_t *bytes) {
  return bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

uint32_t AddEight(uint32_t state, const uint8_t *bytes) {
  const uint32_t low = state ^ Word(bytes);
  const uint32_t high = Word(bytes + 4);
  return kTables[7][low & 0xFF] ^ kTables[6][low >> 8 & 0xFF] ^ kTables[5][low >> 16 & 0xFF] ^
         kTables[4][low >> 24] ^ kTables[3][high & 0xFF] ^ kTables[2][high >> 8 & 0xFF] ^
         kTables[1][high >> 16 & 0xFF] ^ kTables[0][high >> 24];
}

// The CRC in the seal of an image that begins with the magic.
uint32_t StoredCrc(Bytes image) {
  const Bytes seal = image.subspan(kSealOffset);
  uint32_t crc = 0;
  for (size_t i = kSealMagic.size(); i < std::min(seal.size(), kSealSize); ++i) {
    crc |= uint32_t{seal[i]} << 8 * (i - kSealMagic.size());
  }
  return crc;
}

std::string CrcText(uint32_t crc) {
  std::string digits;
  for (int shift = 28; shift >= 0; shift -= 4) {
    digits += "0123456789ABCDEF"[crc >> shift & 0xF];
  }
  return digits;
}

}  // namespace

void Crc32::Add(Bytes bytes) {
  const uint8_t *at = bytes.data();
  size_t left = bytes.size();
  uint32_t state = state_;
  for (; left >= 8; left -= 8, at += 8) {
    state = AddEight(state, at);
  }
  for (; left > 0; --left, ++at) {
    state = state >> 8 ^ kTables[0][(state ^ *at) & 0xFF];
  }
  state_ = state;
}

SealReader::SealReader(Bytes image) : image_(image) {
  constexpr std::array<uint8_t, kSealSize> kZeros{};
  position_ = std::min(image.size(), kSealEnd);
  const size_t before = std::min(image.size(), kSealOffset);
  crc_.Add(image.first(before));
  crc_.Add(Bytes(kZeros).first(position_ - before));
}

void SealReader::ReadTo(uint64_t offset) {
  if (offset <= position_) {
    return;
  }
  const size_t end = static_cast<size_t>(std::min<uint64_t>(offset, image_.size()));
  crc_.Add(image_.subspan(position_, end - position_));
  position_ = end;
}

SealView SealReader::Finish() {
  ReadTo(image_.size());
  SealView seal = {SealState::kNone, 0, crc_.value()};
  if (HasSeal(image_)) {
    seal.stored = StoredCrc(image_);
    seal.state = seal.stored == seal.found ? SealState::kRight : SealState::kWrong;
  }
  return seal;
}

bool HasSeal(Bytes image) {
  return image.size() >= kSealOffset + kSealMagic.size() &&
         std::equal(kSealMagic.begin(), kSealMagic.end(), image.begin() + kSealOffset);
}

SealView SealOf(Bytes image) {
  return SealReader(image).Finish();
}

std::array<uint8_t, kSealSize> SealBytes(uint32_t crc) {
  std::array<uint8_t, kSealSize> seal{};
  std::ranges::copy(kSealMagic, seal.begin());
  for (size_t i = 0; i < 4; ++i) {
    seal[kSealMagic.size() + i] = static_cast<uint8_t>(crc >> 8 * i);
  }
  return seal;
}

std::string SealText(const SealView &seal) {
  switch (seal.state) {
    case SealState::kNone:
      return "not sealed";
    case SealState::kRight:
      return "sealed (CRC " + CrcText(seal.stored) + ")";
    case SealState::kWrong:
      return "seal wrong (CRC " + CrcText(seal.stored) + " instead of " + CrcText(seal.found) + ")";
  }
  return "";
}

std::string WrongSealText(const SealView &seal) {
  return "the file is damaged: its seal says CRC " + CrcText(seal.stored) +
         ", but that of its bytes is " + CrcText(seal.found) +
         "; the framework refuses it before it drives a line";
}

void Seal(std::span<uint8_t> image) {
  if (image.size() < kSealEnd) {
    return;
  }
  std::ranges::copy(SealBytes(SealOf(image).found), image.begin() + kSealOffset);
}

void Unseal(std::span<uint8_t> image) {
  if (image.size() >= kSealEnd) {
    std::ranges::fill(image.subspan(kSealOffset, kSealSize), uint8_t{0});
  }
}

}  // namespace tvb
