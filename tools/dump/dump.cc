// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/dump/dump.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tvb/reader.h"
#include "tvb/seal.h"
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

// The loop that contains each record of a file.
class LoopNesting {
 public:
  uint64_t Enter(const tvb::RecordView &record) {
    if (record.opcode == tvb::kEndLoop) {
      loop_ = 0;
    }
    const uint64_t loop = loop_;
    if (record.opcode == tvb::kLoop) {
      loop_ = record.index;
    }
    return loop;
  }

 private:
  uint64_t loop_ = 0;
};

// A fault that ends a listing before the end of the file.
struct ListingFault {
  std::string place;
  std::string message;
};

// The fault, if any, of a file whose records end at `end`.
std::optional<ListingFault> FaultOfEnd(const TvbFile &file, uint64_t end, uint64_t records) {
  const uint64_t size = file.image().size();
  if (end > size) {
    return ListingFault{file.Where(size, records),
                        fmt::format("the last record goes {} past the end of the file",
                                    CountText(end - size, "byte"))};
  }
  if (end < size) {
    return ListingFault{
        file.Where(end),
        fmt::format("{} where a record should begin; expected '^' (0x5E) or the end of the file",
                    tvb::Hex(file.image()[static_cast<size_t>(end)]))};
  }
  return std::nullopt;
}

std::optional<ListingFault> List(TvbFile &file, DumpFormat &format) {
  tvb::Reader reader(file.image(), file.header());
  LoopNesting nesting;
  format.Header(file.header(), tvb::SealOf(file.image()));
  while (const std::optional<tvb::RecordView> record = reader.Next()) {
    format.Record(*record, nesting.Enter(*record));
    if (record->fault) {
      return ListingFault{file.Where(record->fault->offset, record->index), record->fault->message};
    }
    file.Forget(record->offset);
  }
  return FaultOfEnd(file, reader.position(), reader.records());
}

int Dump(const DumpOptions &options) {
  TvbFile file(options.input);
  OutputFile out("-");
  const std::optional<ListingFault> fault = List(file, *MakeFormat(options, file.image(), out));
  out.Commit();
  if (fault) {
    Error(fault->place, fault->message);
    return kBad;
  }
  return kDone;
}

}  // namespace

void AddDump(CLI::App &app, Invocation &invocation) {
  CLI::App *dump = app.add_subcommand("dump", "List the records of a TVB file");
  const auto options = std::make_shared<DumpOptions>();
  AddInput(*dump, invocation, "IN.tvb", options->input, "TVB file to list; - is standard input");
  dump->add_flag("--json", options->json,
                 "Print one JSON object a line: the header, then each record");
  dump->add_flag("--hex", options->hex,
                 "Show the data too, as in SVF: the rightmost bit is shifted first");
  dump->callback([options, &invocation] { invocation.run = [options] { return Dump(*options); }; });
}

}  // namespace tool
