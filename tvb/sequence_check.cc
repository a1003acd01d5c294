// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/sequence_check.h"

#include <algorithm>
#include <string>

#include "tvb/text.h"

namespace tvb {
namespace {

std::string PlaceText(const ChainPlace &place) {
  return Count(place.before, "device") + " before the target and " + std::to_string(place.after) +
         " after it";
}

std::string NamesOfSet(const PadBits &pads) {
  std::string names;
  auto add = [&names](const char *name, uint32_t bits) {
    names += bits == 0 ? "" : (names.empty() ? "" : ", ") + std::string(name);
  };
  add("HIR", pads.hir);
  add("TIR", pads.tir);
  add("HDR", pads.hdr);
  add("TDR", pads.tdr);
  return names;
}

}  // namespace

void LoopCheck::Loop(const RecordView &record) {
  if (open_) {
    findings_.Error(record, "a loop inside the loop of record " + std::to_string(open_->index) +
                                ": the player has one counter; end that loop first");
  }
  const NumberView &count = *record.value;
  if (count.lossy || count.value < 0) {
    findings_.Error(record, "a loop count of " + NumberText(count) +
                                " is negative to the player, which plays the body once; expected 1 "
                                "to 2147483647");
  } else if (count.value == 0) {
    findings_.Warn(record, "a loop count of 0: the player plays the body once");
  }
  open_ = record;
}

void LoopCheck::EndLoop(const RecordView &record) {
  if (!open_) {
    findings_.Error(record, "ENDLOOP without a LOOP before it; leave it out");
  }
  open_.reset();
}

void LoopCheck::EndOfFile() {
  if (open_) {
    findings_.Error(*open_,
                    "a loop that is not closed: the player plays its body once; put an "
                    "ENDLOOP after it");
  }
}

void ChainCheck::First(Bytes image, const RecordView &record) {
  told_ = PlaceToldBy(image, record);
}

void ChainCheck::Pad(const RecordView &record) {
  pads_.Apply(record);
  if (record.bits() == 0) {
    return;
  }
  used_.before = std::max({used_.before, pads_.tdr, pads_.tir / kInstructionBits});
  used_.after = std::max({used_.after, pads_.hdr, pads_.hir / kInstructionBits});
  last_pad_ = record;
  if (!first_pad_) {
    first_pad_ = record;
    findings_.Warn(
        record,
        "the player does not drive TDI for the bits of headers and trailers: it stays as "
        "the bit before left it; put what other devices must see into the shifts");
  }
}

void ChainCheck::EndOfFile() {
  if (first_pad_ && !(told_ == used_)) {
    findings_.Warn(*first_pad_,
                   "headers and trailers are those of a chain with " + PlaceText(used_) +
                       ", but the first record tells the player of " + PlaceText(told_) +
                       ": it will read the IDCODE of another device; open the file with an SIR of "
                       "BYPASS (0xFF) for each of them and the target's IDCODE instruction");
  }
  std::string left = NamesOfSet(pads_);
  if (last_pad_ && !left.empty()) {
    findings_.Warn(*last_pad_, "still set at the end of the file: " + left +
                                   "; the player keeps the lengths for the next download, end with "
                                   "a length of 0 for each");
  }
}

void TimeCheck::Frequency(const RecordView &record) {
  const NumberView &number = *record.value;
  if (number.lossy || number.value < 0) {
    findings_.Broken(record, number.offset,
                     "frequency of " + NumberText(number) + "; expected 0 to 2147483647 Hz");
    return;
  }
  uint32_t hz = number.low();
  std::optional<uint32_t> exact = rate_.Exact();
  if (hz != 0) {
    CheckCarryOver(record);
  }
  if (hz != 0 && exact && hz > *exact) {
    findings_.Warn(record, "FREQUENCY " + std::to_string(hz) + " has no effect: the lower " +
                               std::to_string(*exact) +
                               " Hz stays in force; put a FREQUENCY 0 before it");
  }
  rate_.Set(hz);
}

void TimeCheck::RunTest(const RecordView &record) {
  CheckGate(record);
  if (!record.Runs() || record.fault) {
    return;
  }
  if (record.closing && *record.closing != kTagEnd) {
    findings_.Broken(record, record.end - 1,
                     "tag " + Hex(*record.closing) +
                         " in a run-test; expected 19, 20 (cycles), 24 (time) or the end tag 23");
    return;
  }
  CheckCarryOver(record);
  rate_.Run();
  if (!CheckFields(record)) {
    return;
  }
  uint64_t hz = rate_.Clocked();
  uint64_t clocks = RunTestClocks(record, hz);
  if (clocks > kMaxCycles) {
    findings_.Broken(record, record.offset,
                     "a run-test of " + std::to_string(clocks) + " clocks at " +
                         std::to_string(hz) + " Hz; the player counts to " +
                         std::to_string(kMaxCycles) + ", write several");
  }
}

void TimeCheck::CheckGate(const RecordView &record) {
  if (record.fault || record.Runs()) {
    return;
  }
  if (*record.gate > 1) {
    findings_.Warn(record, "a run-test with gate byte " + Hex(*record.gate) +
                               "; the player runs it only for 1");
  } else if (*record.gate == 1) {
    findings_.Warn(record, "a run-test whose length of " + NumberText(record.length) +
                               " bits makes the player pass over it; it runs from 24 on");
  }
}

bool TimeCheck::CheckFields(const RecordView &record) {
  bool valid = true;
  for (const FieldView &field : record.fields) {
    if (field.number && !ReadRunTestField(field).valid) {
      valid = false;
      findings_.Broken(
          record, field.number->offset,
          std::string(TagName(field.tag)) + " number " + NumberText(*field.number) +
              " of a run-test; it holds an offset of 10, and above 32768 one of 32778");
    }
  }
  return valid;
}

void TimeCheck::CheckCarryOver(const RecordView &record) {
  if (rate_.certain() || told_carry_over_) {
    return;
  }
  told_carry_over_ = true;
  findings_.Warn(record,
                 "no FREQUENCY 0 before this: a lower frequency that an earlier download has set "
                 "stays in force; put one first");
}

void CheckLastRecord(const RecordView &record, Findings &findings) {
  if (!record.fault && record.IsShift() && record.Block(kTagTdo) && record.Block(kTagMask)) {
    findings.Error(record,
                   "the last record compares TDO: the player sees a mismatch only when a "
                   "further record starts; put a harmless one after it");
  }
}

}  // namespace tvb
