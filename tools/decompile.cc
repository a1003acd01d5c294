// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/decompile.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string_view>

#include "tools/cli/command.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tools/cli/text_buffer.h"
#include "tvb/checker.h"
#include "tvb/names.h"
#include "tvb/play_order.h"
#include "tvb/player.h"
#include "tvb/reader.h"
#include "tvb/record.h"
#include "tvb/text.h"

namespace tool {
namespace {

constexpr uint64_t kMaxStatements = 10000000;

// Many SVF readers take lines of at most 256 characters: three short fields go on one line, a
// longer field on a line of its own, and the digits of long fields on separate lines.
constexpr size_t kDigitsOfShortField = 64;
constexpr size_t kDigitsInLine = 128;

// Writes SVF statements. See tvb::Bytes for the bit order of register data.
class SvfOutput {
 public:
  // `out` outlives the object.
  explicit SvfOutput(OutputFile &out) : out_(out) {}

  // Writes a one-line comment; its parts, as for TextBuffer::Put(), have no line end.
  template <typename... Parts>
  void Comment(const Parts &...parts) {
    text_.Put("! ", parts..., '\n');
    Write();
  }

  // Writes a complete statement, given without its ';'.
  template <typename... Parts>
  void Statement(const Parts &...parts) {
    text_.Put(parts..., ";\n");
    Write();
  }

  // Begins a register statement: "SDR 24". Its fields follow, then End().
  void Begin(const char *command, uint32_t bits) {
    bits_ = bits;
    text_.Put(command, ' ', bits);
  }

  void Field(const char *name, tvb::Bytes data) {
    digits_.Clear();
    digits_.PutRegister(data, bits_);
    const std::string_view digits = digits_.text();
    text_.Put(digits.size() <= kDigitsOfShortField ? " " : "\n  ", name, " (");
    for (size_t at = 0; at < digits.size(); at += kDigitsInLine) {
      text_.Put(digits.size() <= kDigitsInLine ? "" : "\n    ", digits.substr(at, kDigitsInLine));
    }
    text_.Put(')');
    Write();
  }

  void End() {
    text_.Put(";\n");
    Write();
  }

 private:
  void Write() {
    out_.Write(text_.text());
    text_.Clear();
  }

  OutputFile &out_;
  uint32_t bits_ = 0;
  TextBuffer text_;
  TextBuffer digits_;
};

// Seconds in SVF notation, exact to the microsecond: "0.0015", "40".
std::string SvfSeconds(uint64_t microseconds) {
  std::string text = fmt::format("{}.{:06}", microseconds / 1000000, microseconds % 1000000);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text;
}

// The sums of a run-test's fields.
struct RunTestSum {
  uint64_t microseconds = 0;
  uint64_t cycles = 0;
};

RunTestSum SumFields(const tvb::RecordView &record) {
  RunTestSum sum;
  for (const tvb::FieldView &view : record.fields) {
    const tvb::RunTestField field = tvb::ReadRunTestField(view);
    sum.microseconds += 1000 * field.milliseconds + field.microseconds;
    sum.cycles += field.cycles;
  }
  return sum;
}

// Refuses a file whose unrolled loops would be impractically long.
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
    if (statements > kMaxStatements) {
      throw Failure(
          fmt::format("SVF has no loops, and with those of this file written out it would "
                      "have more than {} statements",
                      NumberText(kMaxStatements)),
          file.Where(loop.offset, loop.index));
    }
  }
}

class Decompiler {
 public:
  Decompiler(TvbFile &file, OutputFile &out, const tvb::Player &player)
      : file_(file), image_(file.image()), order_(image_, file.header(), player), svf_(out) {}

  // Returns the player after the file.
  tvb::Player Run() {
    Preamble();
    Progress progress("decompile", image_.size());
    while (std::optional<tvb::PlayedRecord> played = order_.Next()) {
      Record(*played);
      progress.Update(order_.position());
      file_.Forget(played->record.offset);
    }
    EndFrequency();
    ClearPads();
    tvb::Player player = order_.player();
    player.EndFile();
    return player;
  }

 private:
  // The player discards the pads at a file's end; in SVF they would hold for the next file.
  void ClearPads() {
    for (const auto &[name, bits] :
         {std::pair("HIR", order_.pads().hir), std::pair("TIR", order_.pads().tir),
          std::pair("HDR", order_.pads().hdr), std::pair("TDR", order_.pads().tdr)}) {
      if (bits != 0) {
        svf_.Statement(name, " 0");
      }
    }
  }

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
        return svf_.Comment("record ", record.index, ": a loop of ",
                            std::max(1, static_cast<int32_t>(record.bits())),
                            " passes, written out");
      case tvb::kEndLoop:
        return;
    }
    svf_.Comment("record ", record.index, ": opcode ", record.opcode, " of ",
                 CountText(record.end - record.offset, "byte"), ", which the player skips");
  }

  void Shift(const tvb::RecordView &record) {
    if (record.bits() == 0) {
      throw Failure("a shift of 0 bits has no form in SVF",
                    file_.Where(record.offset, record.index));
    }
    const bool compares = record.Block(tvb::kTagMask) != nullptr;
    auto data = [&](tvb::Tag tag) {
      return record.Block(tag) ? tvb::FieldData(image_, record, tag)
                               : tvb::Buffer(tvb::BytesOfBits(record.bits()), 0);
    };
    if (!compares && record.Block(tvb::kTagTdo)) {
      svf_.Comment("record ", record.index, ": its TDO has no MASK and is not compared");
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

  // The player keeps the lowest frequency until a 0 clears it; in SVF each frequency replaces the
  // one before.
  void Frequency(const tvb::RecordView &record) {
    const uint32_t hz = record.bits();
    const std::optional<uint32_t> exact = rate_.Exact();
    if (hz == 0) {
      EndFrequency();
      cleared_ = true;
    } else if (exact && hz > *exact) {
      EndFrequency();
      svf_.Comment("record ", record.index, ": FREQUENCY ", hz, " HZ, which does not raise the ",
                   *exact, " HZ in force");
    } else {
      cleared_ = false;
      svf_.Statement("FREQUENCY ", hz, " HZ");
    }
    rate_.Set(hz);
  }

  // Ends a FREQUENCY 0 that no other value has followed.
  void EndFrequency() {
    if (cleared_) {
      svf_.Statement("FREQUENCY");
    }
    cleared_ = false;
  }

  void RunTest(const tvb::RecordView &record) {
    if (!record.Runs()) {
      if (record.end < image_.size()) {
        svf_.Comment("record ", record.index, ": a run-test that does not run");
      }
      return;
    }
    rate_.Run();
    RunTestSum sum = SumFields(record);
    if (sum.microseconds > 0 && IsTimeAlone(record, sum)) {
      sum.cycles = 0;
    }
    // One statement of both would take the longer; the player plays them one after the other.
    if (sum.microseconds > 0) {
      svf_.Statement("RUNTEST ", SvfSeconds(sum.microseconds), " SEC");
    }
    if (sum.cycles > 0 || sum.microseconds == 0) {
      svf_.Statement("RUNTEST ", sum.cycles, " TCK");
    }
  }

  // True if the record's single cycle only makes up for the rounding of a time's two fields.
  bool IsTimeAlone(const tvb::RecordView &record, const RunTestSum &sum) const {
    if (sum.cycles != 1 || sum.microseconds > tvb::kMaxTime) {
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
  bool cleared_ = false;  // the previous record was a FREQUENCY 0
};

struct DecompileOptions {
  std::vector<std::string> inputs;
  std::string output = "-";
  bool force = false;
};

// Throws Failure for the first error; with `force` only for what the player cannot play: a file
// with other errors has an SVF that does what the player does. A wrong seal is no such error: the
// SVF shows what the file has become.
void RefuseErrors(TvbFile &file, bool force) {
  const auto refuse = [&file, force](const tvb::Finding &finding) {
    const std::string place = file.Where(finding.offset, finding.record);
    if (finding.severity == tvb::Severity::kBroken) {
      throw Failure(finding.message, place);
    }
    if (finding.severity == tvb::Severity::kError && !force) {
      throw Failure(fmt::format("{} (--force decompiles what the player does)", finding.message),
                    place);
    }
    if (finding.severity != tvb::Severity::kWarning) {
      Warning(place, finding.message);
    }
  };
  tvb::CheckImage(file.image(), refuse, [&file](uint64_t offset) { file.Forget(offset); });
}

int DecompileFiles(const DecompileOptions &options) {
  OutputFile out(options.output);
  tvb::Player player;
  for (const std::string &path : options.inputs) {
    TvbFile file(path);
    RefuseErrors(file, options.force);
    player = Decompile(file, out, player);
  }
  out.Commit();
  return kDone;
}

}  // namespace

tvb::Player Decompile(TvbFile &file, OutputFile &out, const tvb::Player &player) {
  RefuseLongLoops(file);
  return Decompiler(file, out, player).Run();
}

void AddDecompile(CLI::App &app, Invocation &invocation) {
  CLI::App *decompile = app.add_subcommand("decompile", "Make an SVF file of TVB files");
  const auto options = std::make_shared<DecompileOptions>();
  AddInputs(*decompile, invocation, "IN.tvb", options->inputs,
            "TVB files to read, in the order of their downloads; - is standard input");
  AddOutput(*decompile, invocation, "-o,--output", options->output,
            "SVF file to write; - is standard output")
      ->type_name("OUT.svf")
      ->capture_default_str();
  decompile->add_flag("--force", options->force,
                      "Accept an error of the file, with a warning, if the player plays it all the "
                      "same");
  decompile->callback(
      [options, &invocation] { invocation.run = [options] { return DecompileFiles(*options); }; });
}

}  // namespace tool
