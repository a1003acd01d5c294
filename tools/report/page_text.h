// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The page around its text and its data. embed.cmake makes the definitions of the files in page/
// when the tool is built.
#pragma once

#include <string_view>

namespace tool {

extern const std::string_view kPageHead;    // up to the text
extern const std::string_view kPageMiddle;  // up to the data
extern const std::string_view kPageTail;

}  // namespace tool
