// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/check_time.h"

#include <string>

#include "tvb/names.h"
#include "tvb/text.h"

namespace tvb {

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

}  // namespace tvb
