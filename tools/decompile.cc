// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/decompile.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/cli/progress.h"
#include "tools/svf_output.h"
#include "tvb/check_time.h"
#include "tvb/clock_rate.h"
#include "tvb/play_order.h"
#include "tvb/reader.h"
#include "tvb/run_test.h"
#include "tvb/text.h"

namespace tool {
namespace {

constexpr uint64_t kMostStatements = 10000000;

// A run-test's fields, summed up.
struct RunTestSum {
  uint64_t microseconds = 0;
  uint64_t cycles = 0;
};

RunTestSum SumOf(const tvb::RecordView &record) {
  RunTestSum sum;
  for (const tvb::FieldView &view : record.fields) {
    const tvb::RunTestField field = tvb::ReadRunTestField(view);
    sum.microseconds += 1000 * field.milliseconds + field.microseconds;
    sum.cycles += field.cycles;
  }
  return sum;
}

// Refuses a file whose loops, written out, are more than anyone can keep.
void RefuseLongLoops(const TvbFile &file) {
  tvb::Reader reader(file.image(), file.header());
  uint64_t statements = 0;
  uint64_t passes = 1;
  tvb::RecordView loop;
  while (std::optional<tvb::RecordView> record = reader.Next()) {
    statements += passes;
    if (record->opcode == tvb::kLoop) {
      loop = *record;
      passes = static_cast<uint64_t>(std::max(1, static_cast<int32_t>(record->bits())));
    } else if (record->opcode == tvb::kEndLoop) {
      passes = 1;
    }
    if (statements > kMostStatements) {
      throw Failure(
          fmt::format("SVF has no loops, and with those of this file written out it would "
                      "have more than {} statements",
                      kMostStatements),
          file.Place(loop.offset, loop.index));
    }
  }
}

class Decompiler {
 public:
  Decompiler(TvbFile &file, OutputFile &out)
      : file_(file), image_(file.image()), order_(image_, file.header()), svf_(out) {}

  void Run() {
    Preamble();
    Progress progress("decompile", image_.size());
    while (std::optional<tvb::PlayedRecord> played = order_.Next()) {
      Record(*played);
      progress.Update(order_.position());
      file_.Forget(played->record.offset);
    }
    EndFrequency();
  }

 private:
  void Preamble() {
    svf_.Comment("Made of a TVB command file");
    svf_.Statement("ENDIR IDLE");
    svf_.Statement("ENDDR IDLE");
    svf_.Statement("STATE RESET");
    svf_.Statement("STATE IDLE");
  }

  void Record(const tvb::PlayedRecord &played) {
    const tvb::RecordView &record = played.record;
    if (record.opcode == tvb::kFrequency) {
      return Frequency(record);
    }
    EndFrequency();
    if (record.IsShift()) {
      return Shift(record);
    }
    if (record.IsPad()) {
      return Pad(record);
    }
    switch (record.opcode) {
      case tvb::kRunTest:
        return RunTest(record);
      case tvb::kLoop:
        return svf_.Comment(fmt::format("record {}: a loop of {} passes, written out", record.index,
                                        std::max(1, static_cast<int32_t>(record.bits()))));
      case tvb::kEndLoop:
        return;
    }
    svf_.Comment(fmt::format("record {}: opcode {} of {}, which the player skips", record.index,
                             record.opcode, tvb::Count(record.end - record.offset, "byte")));
  }

  void Shift(const tvb::RecordView &record) {
    if (record.bits() == 0) {
      throw Failure("a shift of 0 bits has no form in SVF",
                    file_.Place(record.offset, record.index));
    }
    const tvb::Buffer zeros(tvb::BytesOfBits(record.bits()), 0);
    const bool compares = record.Block(tvb::kTagMask) != nullptr;
    auto data = [&](tvb::Tag tag) {
      return record.Block(tag) ? tvb::FieldData(image_, record, tag) : zeros;
    };
    if (!compares && record.Block(tvb::kTagTdo)) {
      svf_.Comment(fmt::format("record {}: its TDO has no MASK and is not compared", record.index));
    }
    svf_.Begin(tvb::OpcodeName(record.opcode), record.bits());
    svf_.Field("TDI", data(tvb::kTagTdi));
    if (compares) {
      svf_.Field("TDO", data(tvb::kTagTdo));
      svf_.Field("MASK", data(tvb::kTagMask));
    }
    svf_.End();
  }

  void Pad(const tvb::RecordView &record) {
    svf_.Begin(tvb::OpcodeName(record.opcode), record.bits());
    if (record.bits() > 0) {
      svf_.Field("TDI", tvb::FieldData(image_, record, tvb::kTagTdi));
    }
    svf_.End();
  }

  // The player keeps the lowest frequency until a 0 makes it forget; in SVF each replaces the one
  // before.
  void Frequency(const tvb::RecordView &record) {
    const uint32_t hz = record.bits();
    const std::optional<uint32_t> exact = rate_.Exact();
    if (hz == 0) {
      EndFrequency();
      cleared_ = true;
    } else if (exact && hz > *exact) {
      EndFrequency();
      svf_.Comment(
          fmt::format("record {}: FREQUENCY {} HZ, which does not raise the {} HZ in force",
                      record.index, hz, *exact));
    } else {
      cleared_ = false;
      svf_.Statement(fmt::format("FREQUENCY {} HZ", hz));
    }
    rate_.Set(hz);
  }

  // A FREQUENCY 0 that none of another value has followed.
  void EndFrequency() {
    if (cleared_) {
      svf_.Statement("FREQUENCY");
    }
    cleared_ = false;
  }

  void RunTest(const tvb::RecordView &record) {
    if (!record.Runs()) {
      if (record.end < image_.size()) {
        svf_.Comment(fmt::format("record {}: a run-test that does not run", record.index));
      }
      return;
    }
    rate_.Run();
    RunTestSum sum = SumOf(record);
    if (sum.microseconds > 0 && IsTimeAlone(record, sum)) {
      sum.cycles = 0;
    }
    // One statement of both would take the longer of them; the player takes them one after another.
    if (sum.microseconds > 0) {
      svf_.Statement(fmt::format("RUNTEST {} SEC", SvfSeconds(sum.microseconds)));
    }
    if (sum.cycles > 0 || sum.microseconds == 0) {
      svf_.Statement(fmt::format("RUNTEST {} TCK", sum.cycles));
    }
  }

  // True if the record's one cycle only makes up for what two fields of a time round off.
  bool IsTimeAlone(const tvb::RecordView &record, const RunTestSum &sum) const {
    if (sum.cycles != 1 || sum.microseconds > tvb::kLongestTime) {
      return false;
    }
    const tvb::Buffer body = tvb::RunTestBody(sum.microseconds, 0, false);
    const uint8_t *stored = image_.data() + record.opcode_offset + 1;
    return body.size() == record.end - record.opcode_offset - 1 &&
           std::equal(body.begin(), body.end(), stored);
  }

  TvbFile &file_;
  tvb::Bytes image_;
  tvb::PlayOrder order_;
  SvfOutput svf_;
  tvb::ClockRate rate_;
  bool cleared_ = false;  // the record before was a FREQUENCY 0
};

}  // namespace

void Decompile(TvbFile &file, OutputFile &out) {
  RefuseLongLoops(file);
  Decompiler(file, out).Run();
}

}  // namespace tool
