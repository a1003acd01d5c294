// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The command `seal`.
#include "tvb/seal.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/cli/command.h"
#include "tools/cli/input_file.h"
#include "tools/cli/output_file.h"
#include "tools/cli/report.h"

namespace tool {
namespace {

struct SealOptions {
  std::vector<std::string> inputs;
  bool remove = false;
  bool force = false;
};

// A file whose seal is to change.
class FileToSeal {
 public:
  // Throws Failure if the file cannot be changed in place, is no TVB file, or has a wrong seal,
  // which only `force` accepts.
  FileToSeal(const std::string &path, bool force) : path_(path) {
    std::error_code none;
    if (path == "-" ||
        (std::filesystem::exists(path, none) && !std::filesystem::is_regular_file(path, none))) {
      throw Failure(fmt::format("cannot change {} in place; name a regular file", path));
    }
    file_ = std::make_unique<TvbFile>(path);
    seal_ = tvb::SealOf(file_->image());
    if (seal_.state == tvb::SealState::kWrong && !force) {
      throw Failure(fmt::format("{}; make it anew, or take it as it is with --force",
                                tvb::WrongSealText(seal_)),
                    file_->name());
    }
  }

  void Seal() const {
    if (seal_.state == tvb::SealState::kRight) {
      return Tell("left as it is, " + tvb::SealText(seal_));
    }
    NoteWhatIsLost();
    Rewrite(tvb::SealBytes(seal_.found));
    Tell(tvb::SealText({tvb::SealState::kRight, seal_.found, seal_.found}));
  }

  void Remove() const {
    if (seal_.state == tvb::SealState::kNone) {
      return Tell("left as it is, not sealed");
    }
    Rewrite({});
    Tell("no longer sealed");
  }

 private:
  void Tell(const std::string &text) const {
    fmt::print("{}: {}\n", file_->name(), text);
  }

  void NoteWhatIsLost() const {
    const tvb::Bytes bytes = file_->image().subspan(tvb::kSealOffset, tvb::kSealSize);
    if (seal_.state == tvb::SealState::kNone &&
        std::ranges::any_of(bytes, [](uint8_t byte) { return byte != 0; })) {
      Note(file_->name(), fmt::format("header bytes 1 to 10 were {:02X}, which the seal replaces",
                                      fmt::join(bytes, " ")));
    }
  }

  void Rewrite(const std::array<uint8_t, tvb::kSealSize> &seal) const {
    OutputFile out(path_);
    const tvb::Bytes rest = file_->image().subspan(tvb::kSealEnd);
    out.Write(file_->image().data(), tvb::kSealOffset);
    out.Write(seal.data(), seal.size());
    out.Write(rest.data(), rest.size());
    out.Commit();
  }

  std::string path_;
  std::unique_ptr<TvbFile> file_;
  tvb::SealView seal_;
};

// All files are looked at before the first is changed.
int Seal(const SealOptions &options) {
  std::vector<FileToSeal> files;
  for (const std::string &path : options.inputs) {
    files.emplace_back(path, options.force);
  }
  for (const FileToSeal &file : files) {
    options.remove ? file.Remove() : file.Seal();
  }
  return kDone;
}

}  // namespace

void AddSeal(CLI::App &app, Invocation &invocation) {
  CLI::App *seal = app.add_subcommand("seal", "Seal TVB files, or take their seals away");
  const auto options = std::make_shared<SealOptions>();
  AddInputs(*seal, invocation, "FILE.tvb", options->inputs, "TVB files to change in place");
  seal->add_flag("--remove", options->remove, "Take the seals away");
  seal->add_flag("--force", options->force,
                 "Take a file whose seal is wrong as it is, though it was changed or cut off");
  seal->callback([options, &invocation] { invocation.run = [options] { return Seal(*options); }; });
}

}  // namespace tool
