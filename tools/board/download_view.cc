// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/board/download_view.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "tools/cli/text.h"

namespace tool {
namespace {

// Done so far, of so many parts.
uint64_t PartsDone(const BoardStatus &status, uint64_t total, uint64_t parts) {
  return total == 0 ? 0 : std::min(status.clocks, total) * parts / total;
}

// As fast as so far.
uint64_t MsLeft(const BoardStatus &status, uint64_t total) {
  const uint64_t left = total - std::min(status.clocks, total);
  return status.clocks == 0 ? 0
                            : static_cast<uint64_t>(static_cast<double>(status.elapsed_ms) *
                                                    static_cast<double>(left) /
                                                    static_cast<double>(status.clocks));
}

uint64_t ClocksPerSecond(const BoardStatus &status) {
  return status.elapsed_ms == 0 ? 0 : status.clocks * 1000 / status.elapsed_ms;
}

const char *WordOf(const DownloadEnd &end) {
  switch (end.code) {
    case kDone:
      return "done";
    case kFailed:
      return "failed";
    case kBad:
      return "refused";
    case kCancelled:
      return end.left ? "left" : "cancelled";
  }
  return "";
}

void PutLine(const nlohmann::ordered_json &line) {
  constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
  fmt::print("{}\n", line.dump(-1, ' ', false, kReplace));
  fflush(stdout);
}

void PutMessage(std::string_view kind, std::string_view place, std::string_view text) {
  PutLine({{"event", "message"}, {"kind", kind}, {"place", place}, {"text", text}});
}

}  // namespace

DownloadView::DownloadView(bool json) : json_(json) {
  if (json_) {
    messages_.emplace(PutMessage);
  }
}

void DownloadView::Begin(const std::string &file, uint64_t total_clocks) {
  file_ = file;
  total_ = total_clocks;
  tenths_ = 0;
  if (json_) {
    PutJson("begin", {});
  } else if (IsTerminal(STDERR_FILENO)) {
    line_ = std::make_unique<Progress>(fmt::format("download {}", file_), total_, "clocks");
  }
}

void DownloadView::Update(const BoardStatus &status) {
  if (json_) {
    PutJson("progress", status);
  } else if (line_) {
    line_->Relabel(fmt::format("download {}  {}", file_, BoardTimeText(status.elapsed_ms)));
    line_->Update(status.clocks);
  } else {
    PutTenths(status);
  }
}

void DownloadView::PutTenths(const BoardStatus &status) {
  const uint64_t tenths = PartsDone(status, total_, 10);
  if (tenths <= tenths_ || tenths == 10) {
    return;
  }
  tenths_ = tenths;
  fmt::print("{}: {} %, {} of {} after {}, {} left\n", file_, PartsDone(status, total_, 100),
             NumberText(status.clocks), CountText(total_, "clock"),
             BoardTimeText(status.elapsed_ms), BoardTimeText(MsLeft(status, total_)));
  fflush(stdout);
}

void DownloadView::End(const DownloadEnd &end) {
  line_.reset();
  if (json_) {
    PutJson(WordOf(end), end.status);
  } else if (end.code == kDone) {
    fmt::print("{}: done, {} in {}\n", file_, CountText(end.status.clocks, "clock"),
               BoardTimeText(end.status.elapsed_ms));
    fflush(stdout);
  }
}

void DownloadView::PutJson(const char *event, const BoardStatus &status) {
  nlohmann::ordered_json line = {{"event", event},
                                 {"file", file_},
                                 {"clocks", status.clocks},
                                 {"total_clocks", total_},
                                 {"percent", PartsDone(status, total_, 100)},
                                 {"elapsed_ms", status.elapsed_ms},
                                 {"left_ms", MsLeft(status, total_)},
                                 {"clocks_per_s", ClocksPerSecond(status)}};
  if (status.state == "idle") {
    line["error"] = status.error;
  }
  if (status.state == "idle" && status.last_read) {
    line["last_read"] = {{"clock", status.last_read->clock},
                         {"level", int(status.last_read->level.value_or(false))}};
  }
  PutLine(line);
}

}  // namespace tool
