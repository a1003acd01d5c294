// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <CLI/CLI.hpp>
#include <memory>
#include <optional>

#include "tools/cli/command.h"
#include "tools/cli/output_file.h"
#include "tools/cli/tvb_file.h"
#include "tools/dump.h"
#include "tvb/reader.h"
#include "tvb/text.h"

namespace tool {
namespace {

struct DumpOptions {
  std::string input;
  bool json = false;
  bool hex = false;
};

std::unique_ptr<DumpFormat> MakeFormat(const DumpOptions &options, tvb::Bytes image,
                                       OutputFile &out) {
  if (options.json) {
    return std::make_unique<DumpJson>(image, out, options.hex);
  }
  return std::make_unique<DumpText>(image, out, options.hex);
}

// Which loop each record of a file stands in.
class LoopNesting {
 public:
  uint64_t Of(const tvb::RecordView &record) {
    if (record.opcode == tvb::kEndLoop) {
      loop_ = 0;
    }
    uint64_t loop = loop_;
    if (record.opcode == tvb::kLoop) {
      loop_ = record.index;
    }
    return loop;
  }

 private:
  uint64_t loop_ = 0;
};

// Returns what ends the listing before the end of the file.
std::optional<Failure> List(TvbFile &file, DumpFormat &format) {
  tvb::Reader reader(file.image(), file.header());
  LoopNesting nesting;
  format.Header(file.header());
  while (std::optional<tvb::RecordView> record = reader.Next()) {
    format.Record(*record, nesting.Of(*record));
    if (record->fault) {
      return Failure(record->fault->message, file.Place(record->fault->offset, record->index));
    }
    file.Forget(record->offset);
  }
  uint64_t end = reader.position();
  if (end > file.image().size()) {
    return Failure("the last record goes " + tvb::Count(end - file.image().size(), "byte") +
                       " past the end of the file",
                   file.Place(file.image().size(), reader.records()));
  }
  if (end < file.image().size()) {
    return Failure(tvb::Hex(file.image()[static_cast<size_t>(end)]) +
                       " where a record should begin; expected '^' (0x5E) or the end of the file",
                   file.Place(end));
  }
  return std::nullopt;
}

int Dump(const DumpOptions &options) {
  TvbFile file(options.input);
  OutputFile out("-");
  std::optional<Failure> failure = List(file, *MakeFormat(options, file.image(), out));
  out.Commit();
  if (failure) {
    throw *failure;
  }
  return kDone;
}

}  // namespace

void AddDump(CLI::App &app, Invocation &invocation) {
  CLI::App *dump = app.add_subcommand("dump", "Show every record of a TVB file");
  const auto options = std::make_shared<DumpOptions>();
  dump->add_option("IN.tvb", options->input, "The file to show; - is standard input")->required();
  dump->add_flag("--json", options->json, "One JSON object a line: the header, then each record");
  dump->add_flag("--hex", options->hex, "Show the data, as SVF does: the rightmost bit goes first");
  dump->callback([options, &invocation] { invocation.run = [options] { return Dump(*options); }; });
}

}  // namespace tool
