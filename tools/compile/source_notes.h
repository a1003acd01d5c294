// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Messages about places in a source text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "svf/text.h"

namespace tool {

// Tells warnings, notes and errors at offsets of one text, as "NAME:LINE:COLUMN: warning: ...". Of
// those that differ in numbers only, it tells the first few and counts the others. Rising offsets
// cost one pass through the text in all.
class SourceNotes {
 public:
  // `name` names the text in messages; `text` must live as long as the object. `quiet`: no notes.
  SourceNotes(std::string name, std::string_view text, bool quiet = false)
      : name_(std::move(name)), lines_(text), quiet_(quiet) {}

  void Warning(size_t offset, std::string_view message);
  void Note(size_t offset, std::string_view message);

  // The same without a place, for the text as a whole.
  void Note(std::string_view message);

  // Keeps an error for Finish(), so that a text's other errors are found too. `pause`: what is
  // refused is a pause, for which Run-Test/Idle can be taken.
  void Refuse(size_t offset, const std::string &message, bool pause = false);

  bool refused() const {
    return refused_ > 0;
  }

  // Throws the first error that was kept, as svf::Error.
  void ThrowRefusal() const;

  // Prints what was counted, and the errors. Throws Failure if there are any.
  void Finish();

  // "NAME:LINE:COLUMN" of an offset.
  std::string Where(size_t offset);

 private:
  struct Message {
    std::string place;
    std::string text;
  };
  struct Kind {
    uint64_t count = 0;
    std::vector<Message> first;
    std::string last;  // its place
  };
  using Kinds = std::map<std::string, Kind>;  // by a message without its numbers
  using Print = void (*)(std::string_view place, std::string_view text);

  // True if the message is one of the first of its kind, which are told.
  bool Count(Kinds &kinds, std::string place, std::string_view text);
  void TellRest(const Kinds &kinds, Print print) const;

  std::string name_;
  svf::LineIndex lines_;
  bool quiet_;
  Kinds warnings_;
  Kinds notes_;
  Kinds errors_;
  std::vector<std::string> order_;   // of the errors' kinds
  std::optional<svf::Error> first_;  // error
  uint64_t refused_ = 0;
  bool only_pauses_ = true;
};

}  // namespace tool
