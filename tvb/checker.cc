// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/checker.h"

#include <optional>
#include <string>

#include "tvb/identity_check.h"
#include "tvb/reader.h"
#include "tvb/register_check.h"
#include "tvb/seal.h"
#include "tvb/sequence_check.h"
#include "tvb/text.h"

namespace tvb {
namespace {

constexpr uint64_t kMaxImage = 0xFFFFFFFF;

// A fault may show only at the end of the image, so resuming after every fault would take forever
// in a large file of noise.
constexpr int kMaxResumes = 100;

class Checker {
 public:
  Checker(Bytes image, const HeaderView &header, Findings &findings)
      : image_(image),
        findings_(findings),
        reader_(image, header),
        time_(findings),
        loops_(findings),
        chain_(findings) {}

  void Check(const std::function<void(uint64_t)> &progress) {
    for (;;) {
      while (std::optional<RecordView> record = reader_.Next()) {
        CheckRecord(*record);
        last_ = std::move(record);
        if (progress) {
          progress(reader_.position());
        }
      }
      if (!FindNextRecord()) {
        break;
      }
    }
    CheckEnd();
  }

  uint64_t records() const {
    return reader_.records();
  }
  uint64_t unchecked() const {
    return unchecked_;
  }

 private:
  void CheckRecord(const RecordView &record) {
    if (reader_.records() == 1) {
      chain_.First(image_, record);
    }
    CheckNumberForm(record, record.length, "length");
    if (record.value) {
      CheckNumberForm(record, *record.value, "number");
    }
    explained_ = !CheckBody(record);
    if (record.fault && !explained_) {
      findings_.Broken(record, record.fault->offset, record.fault->message);
      explained_ = true;
    }
    if (!record.fault && !explained_) {
      CheckLength(record);
    }
  }

  // Returns false if its findings also explain a fault of the record.
  bool CheckBody(const RecordView &record) {
    if (record.IsShift() || record.IsPad()) {
      bool sound = CheckRegisters(image_, record, chain_.pads(), findings_);
      if (sound && record.IsPad() && !record.fault) {
        chain_.Pad(record);
      }
      if (sound && record.IsShift() && !record.fault) {
        CheckScan(record);
      }
      return sound;
    }
    if (record.fault) {
      return true;
    }
    switch (record.opcode) {
      case kRunTest:
        time_.RunTest(record);
        CheckWait(record);
        break;
      case kFrequency:
        time_.Frequency(record);
        break;
      case kLoop:
        loops_.Loop(record);
        break;
      case kEndLoop:
        loops_.EndLoop(record);
        break;
    }
    return true;
  }

  void CheckScan(const RecordView &record) {
    CheckInstructionLength(record);
    if (identity_.settled()) {
      return;
    }
    auto data = [&](Tag tag) {
      return record.bits() <= kMaxIdentityBits ? FieldData(image_, record, tag) : Buffer();
    };
    const Buffer tdi = record.opcode == kSir ? data(kTagTdi) : Buffer();
    const Buffer tdo = data(kTagTdo);
    const Buffer mask = data(kTagMask);
    const Shift scan = {record.bits(), tdi, tdo, mask};
    TellRisk(
        identity_.Scan({record.offset, record.index}, static_cast<Opcode>(record.opcode), scan));
  }

  void CheckWait(const RecordView &record) {
    if (!identity_.settled() && record.Runs() && RunTestClocks(record, kDefaultHz) > 0) {
      TellRisk(identity_.Wait());
    }
  }

  void TellRisk(const std::optional<IdentityCheck::Risk> &risk) {
    if (risk) {
      findings_.Add(Severity::kWarning, risk->scan.offset, risk->scan.record, risk->message);
    }
  }

  void CheckInstructionLength(const RecordView &record) {
    if (record.opcode != kSir || told_length_ || record.bits() % kInstructionBits == 0) {
      return;
    }
    told_length_ = true;
    findings_.Warn(record, InstructionLengthRisk(record.bits()));
  }

  void CheckNumberForm(const RecordView &record, const NumberView &number, const char *what) {
    if (number.padded) {
      findings_.Warn(record, std::string("the ") + what + " at " + Hex(number.offset) + " takes " +
                                 Count(number.size, "byte") + "; a shorter form says the same");
    }
  }

  void CheckLength(const RecordView &record) {
    if (IsReserved(record.opcode)) {
      CheckSkipped(record);
      return;
    }
    uint64_t bytes = record.end - record.opcode_offset;
    if (!record.length.lossy && record.length.value == static_cast<int64_t>(8 * bytes)) {
      return;
    }
    std::string message = LengthText(record.length) + "; expected " + std::to_string(8 * bytes) +
                          ", opcode and body being " + Count(bytes, "byte");
    if (AtRecordOrEnd(record.end)) {
      findings_.Error(record, message);
      return;
    }
    explained_ = true;
    findings_.Broken(record, record.offset,
                     message + "; the player goes by these and stops at what follows, " +
                         Hex(image_[static_cast<size_t>(record.end)]) + " instead of '^'");
  }

  void CheckSkipped(const RecordView &record) {
    if (record.length.lossy || record.length.value < 8 || record.length.value % 8 != 0) {
      findings_.Broken(record, record.length.offset,
                       LengthText(record.length) +
                           ", by which the player skips this record; expected a multiple of 8 "
                           "from 8 on");
      explained_ = true;
    } else if (record.end > image_.size()) {
      findings_.Broken(record, record.length.offset,
                       LengthText(record.length) + " goes " +
                           Count(record.end - image_.size(), "byte") + " past the end of the file");
      explained_ = true;
    }
  }

  bool AtRecordOrEnd(uint64_t offset) const {
    return offset >= image_.size() || image_[static_cast<size_t>(offset)] == kMark;
  }

  // The walk has stopped. Returns true if it can continue at the end given by the last record's
  // length.
  bool FindNextRecord() {
    uint64_t stop = reader_.position();
    bool stopped_by_fault = last_ && last_->fault;
    if (!stopped_by_fault && stop >= image_.size()) {
      return false;
    }
    if (!stopped_by_fault && !explained_) {
      TellJunk(stop);
    }
    if (last_ && last_->EndByLength() > static_cast<int64_t>(last_->opcode_offset)) {
      uint64_t by_length = static_cast<uint64_t>(last_->EndByLength());
      if (by_length != stop && AtRecordOrEnd(by_length) && resumed_ < kMaxResumes) {
        ++resumed_;
        reader_.MoveTo(by_length);
        return by_length < image_.size();
      }
    }
    unchecked_ = stop < image_.size() ? image_.size() - stop : 0;
    return false;
  }

  void TellJunk(uint64_t offset) {
    findings_.Add(
        Severity::kBroken, offset, 0,
        Hex(image_[static_cast<size_t>(offset)]) +
            " where a record should begin; expected '^' (0x5E) or the end of the file: the "
            "player stops here, as if all had been played, and leaves out " +
            Count(image_.size() - offset, "byte"));
  }

  // Anything missing at the end of a file is meaningless if that end was not found.
  void CheckEnd() {
    if (unchecked_ != 0 || (last_ && last_->fault && reader_.position() >= image_.size())) {
      return;
    }
    loops_.EndOfFile();
    chain_.EndOfFile();
    TellRisk(identity_.End());
    if (last_) {
      CheckLastRecord(*last_, findings_);
    } else {
      findings_.Add(Severity::kWarning, reader_.position(), 0, "the file has no records");
    }
  }

  Bytes image_;
  Findings &findings_;
  Reader reader_;
  TimeCheck time_;
  LoopCheck loops_;
  ChainCheck chain_;
  IdentityCheck identity_;
  bool told_length_ = false;
  std::optional<RecordView> last_;
  bool explained_ = false;  // a finding says why no record follows the last one
  int resumed_ = 0;
  uint64_t unchecked_ = 0;
};

void CheckSeal(const SealView &seal, Findings &findings) {
  if (seal.state == SealState::kWrong) {
    findings.Add(Severity::kDamaged, kSealOffset, 0, WrongSealText(seal));
  }
}

void CheckHeader(Bytes image, const HeaderView &header, Findings &findings) {
  if (header.number.lossy || header.number.padded) {
    findings.Add(Severity::kWarning, header.number.offset, 0,
                 "the header's number takes " + Count(header.number.size, "byte") +
                     "; a number of 32 bits takes less");
  }
  if (image.size() > kMaxImage) {
    findings.Add(Severity::kBroken, kMaxImage, 0,
                 "the file has " + std::to_string(image.size()) +
                     " bytes; the player takes at most " + std::to_string(kMaxImage));
  }
}

}  // namespace

CheckResult CheckImage(Bytes image, const Findings::Report &report,
                       const std::function<void(uint64_t)> &progress) {
  CheckResult result;
  Findings findings(report);
  HeaderView header = ReadHeader(image);
  result.is_tvb = !header.fault;
  if (header.fault) {
    findings.Add(Severity::kBroken, header.fault->offset, 0, header.fault->message);
  } else {
    CheckHeader(image, header, findings);
    Checker checker(image, header, findings);
    SealReader seal(image);
    checker.Check([&](uint64_t offset) {
      seal.ReadTo(offset);
      if (progress) {
        progress(offset);
      }
    });
    result.seal = seal.Finish();
    CheckSeal(result.seal, findings);
    result.records = checker.records();
    result.unchecked = checker.unchecked();
  }
  result.errors = findings.errors();
  result.warnings = findings.warnings();
  return result;
}

}  // namespace tvb
