// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/rehearse/play_input.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tools/cli/command.h"
#include "tools/compile/compilation.h"

namespace tool {

std::string PlayInput::Statement(const SourcePlace &place) const {
  return source == nullptr || source->svf == nullptr
             ? ""
             : StatementText(source->svf->text(), place.line, place.column);
}

PlayInputs::PlayInputs(const PlayInputOptions &options) : options_(options) {
  for (const std::string &path : options.paths) {
    Open(path);
  }
  if (!options.map.empty()) {
    ReadMap();
  }
}

void PlayInputs::Open(const std::string &path) {
  auto input = std::make_unique<InputFile>(path);
  if (IsSvf(*input)) {
    Compile(std::move(input));
  } else {
    PlayInput &added = Add(std::make_unique<TvbFile>(std::move(input)), nullptr);
    added.seal = tvb::SealOf(added.file->image());
    if (added.seal->state == tvb::SealState::kWrong) {
      throw Failure(tvb::WrongSealText(*added.seal), added.file->name());
    }
  }
}

void PlayInputs::Compile(std::unique_ptr<InputFile> svf) {
  SourceNotes notes(svf->name(), svf->text(), options_.quiet);
  CompiledFiles compiled(svf->text());
  CompileOptions options;
  options.pause_as_idle = options_.pause_as_idle;
  Compiler compiler(options, notes, [&](std::optional<size_t> reset) {
    if (reset) {
      notes.Note(*reset, fmt::format("the TAP is reset here, so another file begins: part {}",
                                     compiled.size() + 1));
    }
    return compiled.Next();
  });
  compiler.WatchScans(
      [&](auto number, auto which, auto pieces) { compiled.AddScan(number, which, pieces); });
  CompileText(compiler, *svf, notes);

  PlaySource &source = *sources_.emplace_back(std::make_unique<PlaySource>());
  source.map.source = svf->name();
  source.svf = std::move(svf);
  const std::string &name = source.map.source;
  for (size_t i = 0; i < compiled.size(); ++i) {
    source.map.files.push_back(
        compiled.TakeMap(i, compiled.size() == 1 ? name : fmt::format("{} part {}", name, i + 1)));
  }
  for (size_t i = 0; i < compiled.size(); ++i) {
    auto image = std::make_unique<InputFile>(source.map.files[i].name, compiled.TakeImage(i));
    Add(std::make_unique<TvbFile>(std::move(image)), &source).map = &source.map.files[i];
  }
}

PlayInput &PlayInputs::Add(std::unique_ptr<TvbFile> file, const PlaySource *source) {
  if (file->image().size() > UINT32_MAX) {
    throw Failure("the file is too long: the driver takes less than 4 GiB", file->name());
  }
  return files_.emplace_back(PlayInput{std::move(file), source, nullptr, std::nullopt});
}

void PlayInputs::ReadMap() {
  const InputFile file(options_.map);
  PlaySource &source = *sources_.emplace_back(std::make_unique<PlaySource>());
  source.map = ReadSourceMap(file);
  for (PlayInput &input : files_) {
    const FileMap *map = input.map == nullptr ? source.map.Find(input.file->image()) : nullptr;
    if (map != nullptr) {
      input.source = &source;
      input.map = map;
    }
  }
  if (std::ranges::none_of(files_, [&](const PlayInput &one) { return one.source == &source; })) {
    throw Failure("this is the map of another file; have it written anew by tvb compile --map",
                  file.name());
  }
}

}  // namespace tool
