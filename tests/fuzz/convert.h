// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// `tvb compile` and `tvb decompile`, from memory to memory.
#pragma once

#include <string>
#include <string_view>

#include "tools/compile/compiler.h"
#include "tvb/bytes.h"

namespace fuzz {

// Throws svf::Error where the tool reports an error.
tvb::Buffer CompileSvf(std::string_view svf, const tool::CompileOptions &options = {});

// The image has a valid header and no broken record. Throws tool::Failure where the tool reports an
// error.
std::string DecompileTvb(tvb::Bytes image);

}  // namespace fuzz
