// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "fuzz/convert.h"

#include <map>

#include "fuzz/fuzz.h"
#include "svf/parser.h"
#include "tools/compile/source_notes.h"
#include "tools/decompile.h"
#include "tvb/header.h"
#include "tvb/play_order.h"

namespace fuzz {
namespace {

constexpr uint64_t kMaxPlayed = 100000;

// The scans have these numbers and bits. Those that the source does not have are not among them.
void RequireScans(tvb::Bytes image, std::map<uint64_t, uint64_t> bits) {
  tvb::PlayOrder order(image, tvb::ReadHeader(image));
  uint64_t scan = 0;
  uint64_t steps = 0;
  while (const auto played = order.Next()) {
    if (++steps > kMaxPlayed) {
      return;
    }
    if (!played->record.IsShift()) {
      continue;
    }
    if (const auto found = bits.find(++scan); found != bits.end()) {
      Require(found->second == played->record.bits(), "a scan has the bits of its statements");
      bits.erase(found);
    }
  }
  Require(bits.empty(), "every statement's scan is played");
}

}  // namespace

tvb::Buffer CompileSvf(std::string_view svf, const tool::CompileOptions &options) {
  tvb::Buffer image;
  tool::SourceNotes notes("fuzz.svf", svf);
  tool::CompileOptions one_file = options;
  one_file.split = false;
  tool::Compiler compiler(one_file, notes, [&image](std::optional<size_t>) {
    return [&image](tvb::Bytes records) { tvb::Append(image, records); };
  });
  std::map<uint64_t, uint64_t> bits;  // by the number of the scan
  compiler.WatchScans([&bits](uint64_t number, svf::Register, const auto &pieces) {
    for (const tool::Compiler::Piece &piece : pieces) {
      bits[number] += uint64_t{piece.header} + piece.bits + piece.trailer;
    }
  });
  svf::Parser parser(svf);
  svf::Statement statement;
  while (parser.Next(statement)) {
    compiler.Compile(statement);
  }
  compiler.Finish();
  notes.ThrowRefusal();
  RequireScans(image, bits);
  return image;
}

std::string DecompileTvb(tvb::Bytes image) {
  const MemoryFile memory(image.data(), image.size());
  tool::TvbFile file(memory.path());
  return Written([&file](tool::OutputFile &out) { tool::Decompile(file, out); });
}

}  // namespace fuzz
