// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tools/cli/output_file.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tools/compile/compilation.h"
#include "tools/compile/compiler.h"
#include "tools/compile/source_notes.h"
#include "tvb/seal.h"

namespace tool {
namespace {

struct CompileCommand {
  std::string input;
  std::string output;
  std::string map;
  std::string chain;
  std::string idcode;
  uint32_t longest_wait = 20;  // in milliseconds
  bool seal = true;
  bool quiet = false;
  CompileOptions options;
};

// ", 12.3 % of the 1,234 bytes of SVF"; nothing if there are none.
std::string PercentText(uint64_t bytes, uint64_t of_svf) {
  return of_svf == 0 ? ""
                     : fmt::format(", {:.1f} % of the {} of SVF",
                                   100.0 * static_cast<double>(bytes) / static_cast<double>(of_svf),
                                   CountText(of_svf, "byte"));
}

std::string TimeText(double nanoseconds) {
  return tool::TimeText(static_cast<uint64_t>(nanoseconds));
}

std::string Summary(const CompileCommand &command, const WrittenFile &file, const InputFile &input,
                    uint64_t bytes, const std::string &output) {
  const WrittenCounts &counts = file.counts;
  const PlayCost &cost = file.cost;
  std::string text = fmt::format("{}: {}, {}{}\n", output, CountText(file.records, "record"),
                                 CountText(bytes, "byte"), PercentText(bytes, input.size()));
  text += fmt::format("  {}, {}, {}; {} shifted; {}\n", CountText(counts.instruction_scans, "SIR"),
                      CountText(counts.data_scans, "SDR"), CountText(counts.run_tests, "run-test"),
                      CountText(counts.bits, "bit"), CountText(file.loops, "loop"));
  text += fmt::format("  {}, {} of them in run-tests\n", CountText(cost.clocks(), "clock"),
                      NumberText(cost.run_test_clocks()));
  const std::string rate = file.only_hz == 0 ? "the frequencies in force"
                                             : fmt::format("{} Hz", NumberText(file.only_hz));
  text += fmt::format("  {} at {}; {} with {} ns a pin call ({})\n",
                      TimeText(cost.time_at_frequency()), rate, TimeText(cost.time_of_pins()),
                      RealText(command.options.pin_ns), CountText(cost.pin_calls(), "call"));
  return text;
}

// The name of the file of that number, from 1: OUT.tvb, OUT-2.tvb, OUT-3.tvb.
std::string NumberedPath(const std::string &path, size_t number) {
  if (number == 1 || path == "/dev/null") {
    return path;
  }
  const std::filesystem::path whole(path);
  const std::string name =
      fmt::format("{}-{}{}", whole.stem().string(), number, whole.extension().string());
  return (whole.parent_path() / name).string();
}

// The files being written: none appears before all are whole.
class TvbFiles {
 public:
  TvbFiles(const CompileCommand &command, const InputFile &input, SourceNotes &notes)
      : command_(command), input_(input), notes_(notes) {
    if (!command.map.empty()) {
      map_.emplace(command.map);
      mapped_.emplace(input.text());
    }
  }

  RecordFolder::Sink Next(std::optional<size_t> reset) {
    const std::string path = NumberedPath(command_.output, files_.size() + 1);
    if (reset) {
      Announce(*reset, path);
    }
    File &file = *files_.emplace_back(std::make_unique<File>(path, command_.seal));
    const RecordFolder::Sink write = [&file](tvb::Bytes records) { file.Write(records); };
    return mapped_ ? mapped_->Next(write) : write;
  }

  // Where the scans come from, if that is wanted; else null.
  CompiledFiles *mapped() {
    return mapped_ ? &*mapped_ : nullptr;
  }

  void Commit() {
    if (map_) {
      map_->Write(SourceMapText(TakeMap()));
      map_->Commit();
    }
    for (const auto &file : files_) {
      file->Commit();
    }
    const std::string further = NumberedPath(command_.output, files_.size() + 1);
    if (further != command_.output && std::filesystem::is_regular_file(further)) {
      Warning(further, "this file is from before, and not one of those just written");
    }
  }

  std::string Summary(const std::vector<WrittenFile> &written) const {
    std::string text;
    for (size_t i = 0; i < written.size(); ++i) {
      text +=
          tool::Summary(command_, written[i], input_, files_[i]->bytes, files_[i]->output.name());
    }
    return text;
  }

 private:
  struct File {
    File(const std::string &path, bool to_seal)
        : output(path, to_seal ? OutputFile::Order::kAmended : OutputFile::Order::kAsWritten),
          sealed(to_seal) {}

    void Write(tvb::Bytes records) {
      output.Write(records.data(), records.size());
      bytes += records.size();
      if (sealed) {
        crc.Add(records);
      }
    }

    // The header that was written has zeros in the place of the seal.
    void Commit() {
      if (sealed) {
        output.Amend(tvb::kSealOffset, tvb::SealBytes(crc.value()));
      }
      output.Commit();
    }

    OutputFile output;
    bool sealed;
    uint64_t bytes = 0;
    tvb::Crc32 crc;
  };

  SourceMap TakeMap() {
    SourceMap map = {input_.name(), {}};
    for (size_t i = 0; i < files_.size(); ++i) {
      map.files.push_back(mapped_->TakeMap(i, files_[i]->output.name()));
    }
    return map;
  }

  void Announce(size_t reset, const std::string &path) {
    std::error_code none;
    if (command_.output == "-" || std::filesystem::is_fifo(command_.output, none)) {
      throw Failure(
          "the TAP is reset here, in the middle of the file, which makes two TVB files of "
          "it; name a file with -o in place of a stream",
          notes_.Where(reset));
    }
    const auto canonical = [&none](const std::string &one) {
      return std::filesystem::weakly_canonical(one, none);
    };
    const bool input = std::filesystem::equivalent(path, command_.input, none);
    if (input || (!command_.map.empty() && canonical(path) == canonical(command_.map))) {
      throw Failure(fmt::format("the next file, {}, would overwrite the {}; name another file",
                                path, input ? "input" : "map"),
                    notes_.Where(reset));
    }
    notes_.Warning(reset,
                   fmt::format("the TAP is reset here, so {} begins: download it after the one "
                               "before; the player resets the TAP and reads the IDCODE first",
                               path));
  }

  const CompileCommand &command_;
  const InputFile &input_;
  SourceNotes &notes_;
  std::optional<OutputFile> map_;
  std::optional<CompiledFiles> mapped_;
  std::vector<std::unique_ptr<File>> files_;
};

int Compile(const CompileCommand &command) {
  InputFile input(command.input);
  SourceNotes notes(input.name(), input.text(), command.quiet);
  TvbFiles files(command, input, notes);
  Compiler compiler(command.options, notes,
                    [&files](std::optional<size_t> reset) { return files.Next(reset); });
  if (CompiledFiles *mapped = files.mapped()) {
    compiler.WatchScans(
        [mapped](auto number, auto which, auto pieces) { mapped->AddScan(number, which, pieces); });
  }
  CompileText(compiler, input, notes);
  files.Commit();
  if (!command.quiet) {
    fmt::print(command.output == "-" ? stderr : stdout, "{}", files.Summary(compiler.files()));
  }
  return kDone;
}

constexpr uint32_t kMaxDevices = 100000;

// "BEFORE,AFTER".
std::optional<tvb::ChainPlace> ParsePlace(std::string_view text) {
  tvb::ChainPlace place;
  const char *end = text.data() + text.size();
  const auto before = std::from_chars(text.data(), end, place.before);
  if (before.ec != std::errc() || before.ptr == end || *before.ptr != ',') {
    return std::nullopt;
  }
  const auto after = std::from_chars(before.ptr + 1, end, place.after);
  if (after.ec != std::errc() || after.ptr != end || place.before > kMaxDevices ||
      place.after > kMaxDevices) {
    return std::nullopt;
  }
  return place;
}

// The error text that follows the option's name, or nothing if the value is valid.
std::string CheckPlace(const std::string &text) {
  return ParsePlace(text)
             ? ""
             : fmt::format(
                   "expected BEFORE,AFTER, two numbers of devices up to {}, as in 1,2; "
                   "found '{}'",
                   kMaxDevices, text);
}

// "raw, run-length, ... or lzw".
std::string EncodingNames() {
  std::string names;
  for (const tvb::EncodingRow &row : tvb::Encodings()) {
    const bool last = &row == &tvb::Encodings().back();
    names += (names.empty() ? "" : last ? " or " : ", ") + std::string(row.name);
  }
  return names;
}

// The mode byte of the encoding with that name.
std::string EncodingMode(const std::string &name) {
  for (const tvb::EncodingRow &row : tvb::Encodings()) {
    if (name == row.name) {
      return fmt::to_string(static_cast<int>(row.encoding));
    }
  }
  throw CLI::ValidationError(
      fmt::format("there is no encoding '{}'; take {}", name, EncodingNames()));
}

void ApplyOptions(CompileCommand &command) {
  if (!command.idcode.empty()) {
    command.options.idcode = ParseIdcode(command.idcode);
  }
  command.options.longest_wait = uint64_t{1000} * command.longest_wait;
  if (!command.chain.empty()) {
    command.options.chain = ParsePlace(command.chain);
  }
}

void AddFiles(CLI::App &app, Invocation &invocation, CompileCommand &command) {
  AddInput(app, invocation, "IN.svf", command.input, "SVF file to read; - is standard input");
  AddOutput(app, invocation, "-o,--output", command.output,
            "TVB file to write; - is standard output")
      ->required()
      ->type_name("OUT.tvb");
  AddOutput(app, invocation, "--map", command.map,
            "Write which line of the SVF each scan comes from, for tvb play --map");
}

void AddTarget(CLI::App &app, CompileCommand &command) {
  app.add_option("--chain", command.chain,
                 "Number of devices between TDI and the target, and between the target and TDO; by "
                 "default, the lengths of TDR and HDR")
      ->check(CheckPlace)
      ->type_name("BEFORE,AFTER");
  app.add_option("--require-idcode", command.idcode,
                 "Compare the target's IDCODE, under a mask, before everything else")
      ->check(CheckIdcode)
      ->type_name("IDCODE[/MASK]");
}

void AddForms(CLI::App &app, CompileCommand &command) {
  app.add_flag("--pause-as-idle", command.options.pause_as_idle,
               "Use Run-Test/Idle for every pause that has no form in a TVB file, with a "
               "warning of what that changes");
  auto *encoding = app.add_option("--encoding", command.options.blocks.encoding,
                                  fmt::format("Encode all data blocks alike: {}; by default, each "
                                              "block takes its smallest",
                                              EncodingNames()))
                       ->type_name("NAME")
                       ->transform(EncodingMode);
  app.add_flag("--no-compress", command.options.plain,
               "Store all data blocks plain, without the byte that names an encoding (header byte "
               "0xF2)")
      ->excludes(encoding);
  app.add_flag_callback(
      "--no-seal", [&command] { command.seal = false; },
      "Leave out the seal, by which the framework refuses a file that was changed or cut off");
  app.add_flag_callback(
      "--no-split", [&command] { command.options.split = false; },
      "Refuse a reset in the middle of the file, where OUT-2.tvb, OUT-3.tvb, ... would begin");
  app.add_option("--longest-wait", command.longest_wait,
                 "Write longer run-tests as pieces of at most so many milliseconds, because the "
                 "player holds a processor while it waits; 0 for no limit")
      ->check(CLI::Range(0u, 1000000u).description(""))
      ->type_name("MS")
      ->capture_default_str();
}

}  // namespace

void AddCompile(CLI::App &app, Invocation &invocation) {
  auto *compile = app.add_subcommand("compile", "Make a TVB file of an SVF file");
  auto command = std::make_shared<CompileCommand>();
  AddFiles(*compile, invocation, *command);
  AddTarget(*compile, *command);
  AddForms(*compile, *command);
  AddPinTime(*compile, command->options.pin_ns);
  compile->add_flag("-q,--quiet", command->quiet, "Print no summary and no notes");
  compile->callback([command, &invocation] {
    ApplyOptions(*command);
    invocation.run = [command] { return Compile(*command); };
  });
}

}  // namespace tool
