// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "shim/pins.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "host.h"

namespace shim {
namespace {

constexpr size_t kContextSize = 136;
constexpr size_t kContextConfig = 16;
constexpr size_t kContextOperations = 128;
constexpr size_t kConfigSize = 40;
constexpr size_t kConfigNumbers = 24;
constexpr int kSlots = 8;
// Not a valid address on arm64 or x86-64.
constexpr uint64_t kPoison = 0xDEAD4EADDEAD4EADull;

constexpr uint32_t kTdiNumber = 5, kTmsNumber = 6, kTdoNumber = 7, kTckNumber = 8;

// Not 0: the driver must not take the write callbacks' results for errors.
constexpr int kWriteResult = -1;

void FillWithPoison(uint8_t *bytes, size_t size) {
  for (size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<uint8_t>(kPoison >> 8 * (i % 8));
  }
}

}  // namespace

// Separate heap blocks, so that a sanitizer detects a read past the end of each.
struct Pins::Records {
  std::unique_ptr<uint8_t[]> context{new uint8_t[kContextSize]};
  std::unique_ptr<uint8_t[]> config{new uint8_t[kConfigSize]};
  std::unique_ptr<void *[]> operations { new void *[kSlots] };
  uint8_t context_as_made[kContextSize];
  uint8_t config_as_made[kConfigSize];
  void *operations_as_made[kSlots];
};

Pins *Pins::current_ = nullptr;

bool operator==(const PinEvent &a, const PinEvent &b) {
  return a.line == b.line && a.level == b.level && a.read == b.read;
}

void PrintTo(const PinEvent &event, std::ostream *out) {
  *out << PinText({event});
}

std::string PinText(const std::vector<PinEvent> &events) {
  static const char kNames[] = {'K', 'M', 'I', 'R'};
  std::string text;
  for (const PinEvent &event : events) {
    if (!text.empty()) {
      text += ' ';
    }
    text += kNames[event.line] + std::to_string(event.level);
  }
  return text;
}

Pins::Pins() : records_(new Records) {
  if (current_ != nullptr) {
    ADD_FAILURE() << "pins: a second board";
  }
  current_ = this;
  FillWithPoison(records_->context.get(), kContextSize);
  FillWithPoison(records_->config.get(), kConfigSize);
  const uint32_t numbers[] = {kTdiNumber, kTmsNumber, kTdoNumber, kTckNumber};
  std::memcpy(records_->config.get() + kConfigNumbers, numbers, sizeof(numbers));
  for (int slot = 0; slot < kSlots; ++slot) {
    SetOperation(slot, reinterpret_cast<void *>(&Unused));
  }
  SetOperation(2, reinterpret_cast<void *>(&DriveHigh));
  SetOperation(3, reinterpret_cast<void *>(&DriveLow));
  SetOperation(4, reinterpret_cast<void *>(&Read));
  SetContextConfig(config());
  SetContextOperations(operations());
  std::memcpy(records_->context_as_made, records_->context.get(), kContextSize);
  std::memcpy(records_->config_as_made, records_->config.get(), kConfigSize);
}

Pins::~Pins() {
  VerifyRecords();
  current_ = nullptr;
}

void *Pins::context() {
  return records_->context.get();
}

const void *Pins::config() const {
  return records_->config.get();
}

const void *Pins::operations() const {
  return records_->operations.get();
}

void Pins::SetContextConfig(const void *config) {
  std::memcpy(records_->context.get() + kContextConfig, &config, sizeof(config));
}

void Pins::SetContextOperations(const void *operations) {
  std::memcpy(records_->context.get() + kContextOperations, &operations, sizeof(operations));
}

void Pins::Select() {
  g_tvb_cpld_cfg = static_cast<const pin_config *>(config());
  g_tvb_jtag_funcs = static_cast<const pin_operations *>(operations());
}

void Pins::OnWrite(std::function<void(Line, bool)> target) {
  on_write_ = std::move(target);
}

void Pins::OnRead(std::function<int()> target) {
  on_read_ = std::move(target);
}

void Pins::Record(bool keep) {
  record_ = keep;
}

const std::vector<PinEvent> &Pins::events() const {
  return events_;
}

void Pins::ClearEvents() {
  events_.clear();
}

std::string Pins::Text() const {
  return PinText(events_);
}

uint64_t Pins::writes() const {
  return writes_;
}

uint64_t Pins::reads() const {
  return reads_;
}

void Pins::SetOperation(int slot, void *function) {
  records_->operations[slot] = function;
  records_->operations_as_made[slot] = function;
}

int Pins::DriveHigh(uint32_t number) {
  current_->Drive(number, true);
  return kWriteResult;
}

int Pins::DriveLow(uint32_t number) {
  current_->Drive(number, false);
  return kWriteResult;
}

int Pins::Read(uint32_t number) {
  return current_->ReadTdo(number);
}

int Pins::Unused(uint32_t number) {
  ADD_FAILURE() << "pins: call of an unused slot with " << number;
  return kWriteResult;
}

void Pins::Drive(uint32_t number, bool level) {
  Line line = kTck;
  if (number == kTmsNumber) {
    line = kTms;
  } else if (number == kTdiNumber) {
    line = kTdi;
  } else if (number != kTckNumber) {
    ADD_FAILURE() << "pins: line " << number << " driven";
    return;
  }
  writes_++;
  if (record_) {
    events_.push_back({line, level, false});
  }
  if (on_write_) {
    on_write_(line, level);
  }
}

int Pins::ReadTdo(uint32_t number) {
  if (number != kTdoNumber) {
    ADD_FAILURE() << "pins: line " << number << " read";
    return 0;
  }
  const int level = on_read_ ? on_read_() : 0;
  reads_++;
  if (record_) {
    events_.push_back({kTdo, static_cast<uint8_t>(level), true});
  }
  return level;
}

void Pins::VerifyRecords() const {
  const Records &r = *records_;
  const auto same = [&r](size_t first, size_t end) {
    return std::memcmp(r.context.get() + first, r.context_as_made + first, end - first) == 0;
  };
  // Tests may change the context's two pointers.
  if (!same(0, kContextConfig) || !same(kContextConfig + 8, kContextOperations)) {
    ADD_FAILURE() << "pins: the download context was written to";
  }
  if (std::memcmp(r.config.get(), r.config_as_made, kConfigSize) != 0) {
    ADD_FAILURE() << "pins: the pin configuration record was written to";
  }
  if (std::memcmp(r.operations.get(), r.operations_as_made, sizeof(r.operations_as_made)) != 0) {
    ADD_FAILURE() << "pins: the pin operation table was written to";
  }
}

}  // namespace shim
