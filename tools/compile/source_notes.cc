// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/compile/source_notes.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/cli/command.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"

namespace tool {
namespace {

constexpr uint64_t kMaxTold = 3;  // messages of a kind

std::string WithoutNumbers(std::string_view text) {
  std::string kind(text);
  kind.erase(std::remove_if(kind.begin(), kind.end(), [](char c) { return c >= '0' && c <= '9'; }),
             kind.end());
  return kind;
}

}  // namespace

void SourceNotes::Warning(size_t offset, std::string_view message) {
  const std::string place = Where(offset);
  if (Count(warnings_, place, message)) {
    tool::Warning(place, message);
  }
}

void SourceNotes::Note(size_t offset, std::string_view message) {
  if (quiet_) {
    return;
  }
  const std::string place = Where(offset);
  if (Count(notes_, place, message)) {
    tool::Note(place, message);
  }
}

void SourceNotes::Note(std::string_view message) {
  if (!quiet_) {
    tool::Note(name_, message);
  }
}

void SourceNotes::Refuse(size_t offset, const std::string &message, bool pause) {
  ++refused_;
  only_pauses_ &= pause;
  if (!first_) {
    first_.emplace(offset, message);
  }
  const std::string kind = WithoutNumbers(message);
  if (errors_.find(kind) == errors_.end()) {
    order_.push_back(kind);
  }
  Count(errors_, Where(offset), message);
}

void SourceNotes::ThrowRefusal() const {
  if (first_) {
    throw svf::Error(*first_);
  }
}

void SourceNotes::Finish() {
  TellRest(warnings_, tool::Warning);
  TellRest(notes_, tool::Note);
  if (refused_ == 0) {
    return;
  }
  if (refused_ == 1) {
    const Message &message = errors_.begin()->second.first.front();
    throw Failure(message.text, message.place);
  }
  for (const std::string &kind : order_) {
    for (const Message &message : errors_[kind].first) {
      Error(message.place, message.text);
    }
    TellRest({{kind, errors_[kind]}}, Error);
  }
  throw Failure(fmt::format("{} errors, nothing is written{}", NumberText(refused_),
                            only_pauses_ ? "; tvb compile --pause-as-idle takes Run-Test/Idle for "
                                           "each of these"
                                         : ""),
                name_);
}

std::string SourceNotes::Where(size_t offset) {
  const svf::Position position = lines_.At(offset);
  return fmt::format("{}:{}:{}", name_, position.line, position.column);
}

bool SourceNotes::Count(Kinds &kinds, std::string place, std::string_view text) {
  Kind &kind = kinds[WithoutNumbers(text)];
  const bool told = ++kind.count <= kMaxTold;
  if (told) {
    kind.first.push_back({place, std::string(text)});
  }
  kind.last = std::move(place);
  return told;
}

void SourceNotes::TellRest(const Kinds &kinds, Print print) const {
  for (const auto &[text, kind] : kinds) {
    if (kind.count > kMaxTold) {
      print(name_,
            fmt::format("{} more like that of {}, the last at {}",
                        NumberText(kind.count - kMaxTold), kind.first.front().place, kind.last));
    }
  }
}

}  // namespace tool
