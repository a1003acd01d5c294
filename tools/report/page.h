// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A report as one HTML page that needs nothing else: no network, no other file.
#pragma once

#include <functional>
#include <string_view>

#include "tools/report/data.h"

namespace tool {

// Receives text as it is produced.
using PageSink = std::function<void(std::string_view text)>;

// Writes the page. Its texts may hold anything; bytes that are not UTF-8 show as U+FFFD.
void WritePage(const ReportData &data, const PageSink &sink);

}  // namespace tool
