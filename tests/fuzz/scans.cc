// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "fuzz/scans.h"

#include "tvb/play_order.h"

namespace fuzz {
namespace {

constexpr uint64_t kMaxSteps = 2000;
constexpr uint64_t kMaxBits = 100000;

tvb::PlayOrder Order(tvb::Bytes image) {
  return tvb::PlayOrder(image, tvb::ReadHeader(image));
}

bool Bit(const tvb::Buffer &data, uint32_t bit) {
  return bit / 8 < data.size() && (data[bit / 8] >> (7 - bit % 8) & 1) != 0;
}

std::string Scan(tvb::Bytes image, const tvb::RecordView &record) {
  const tvb::Buffer tdi = tvb::FieldData(image, record, tvb::kTagTdi);
  const tvb::Buffer tdo = tvb::FieldData(image, record, tvb::kTagTdo);
  const tvb::Buffer mask = tvb::FieldData(image, record, tvb::kTagMask);
  std::string sent;
  std::string compared;
  for (uint32_t bit = 0; bit < record.bits(); ++bit) {
    sent += Bit(tdi, bit) ? '1' : '0';
    compared += !Bit(mask, bit) ? '-' : Bit(tdo, bit) ? '1' : '0';
  }
  return (record.opcode == tvb::kSir ? "IR " : "DR ") + sent + " " + compared + "\n";
}

}  // namespace

bool IsMuch(tvb::Bytes image) {
  tvb::PlayOrder order = Order(image);
  uint64_t bits = 0;
  while (const std::optional<tvb::PlayedRecord> played = order.Next()) {
    bits += played->record.IsShift() || played->record.IsPad() ? played->record.bits() : 0;
    if (played->step > kMaxSteps || bits > kMaxBits) {
      return true;
    }
  }
  return false;
}

bool HasPads(tvb::Bytes image) {
  tvb::Reader reader(image, tvb::ReadHeader(image));
  while (const std::optional<tvb::RecordView> record = reader.Next()) {
    if (record->IsPad() && record->bits() > 0) {
      return true;
    }
  }
  return false;
}

std::string Scans(tvb::Bytes image) {
  tvb::PlayOrder order = Order(image);
  std::string scans;
  while (const std::optional<tvb::PlayedRecord> played = order.Next()) {
    if (played->record.IsShift()) {
      scans += Scan(image, played->record);
    }
  }
  return scans;
}

}  // namespace fuzz
