// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What is shown of downloads on this machine while they run.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tools/board/download.h"
#include "tools/cli/report.h"

namespace tool {

// A line that changes on a terminal (standard error); lines at each tenth elsewhere (standard
// output); or JSON lines (standard output), messages included.
class DownloadView {
 public:
  explicit DownloadView(bool json);

  // A file's download begins, proceeds and has ended.
  void Begin(const std::string &file, uint64_t total_clocks);
  void Update(const BoardStatus &status);
  void End(const DownloadEnd &end);

 private:
  void PutTenths(const BoardStatus &status);
  void PutJson(const char *event, const BoardStatus &status);

  bool json_;
  std::optional<MessageListener> messages_;
  std::unique_ptr<Progress> line_;  // of the file that is downloaded, on a terminal
  std::string file_;
  uint64_t total_ = 0;
  uint64_t tenths_ = 0;  // shown so far
};

}  // namespace tool
