// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "fuzz/convert.h"

#include "fuzz/fuzz.h"
#include "svf/parser.h"
#include "tools/compile/source_notes.h"
#include "tools/decompile.h"

namespace fuzz {

tvb::Buffer CompileSvf(std::string_view svf, const tool::CompileOptions &options) {
  tvb::Buffer image;
  tool::SourceNotes notes("fuzz.svf", svf);
  tool::CompileOptions one_file = options;
  one_file.split = false;
  tool::Compiler compiler(one_file, notes, [&image](std::optional<size_t>) {
    return [&image](tvb::Bytes records) { tvb::Append(image, records); };
  });
  svf::Parser parser(svf);
  svf::Statement statement;
  while (parser.Next(statement)) {
    compiler.Compile(statement);
  }
  compiler.Finish();
  notes.ThrowRefusal();
  return image;
}

std::string DecompileTvb(tvb::Bytes image) {
  const MemoryFile memory(image.data(), image.size());
  tool::TvbFile file(memory.path());
  return Written([&file](tool::OutputFile &out) { tool::Decompile(file, out); });
}

}  // namespace fuzz
