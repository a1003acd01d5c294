// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "cases.h"
#include "pins.h"

namespace bench {

namespace {

void Play(const Image &image, const pin_operations &operations) {
  download_context context = {};
  context.pins = &kPins;
  context.operations = &operations;
  g_freq = 0;
  if (TvbToVec(&context, image.bytes.data(), static_cast<u32>(image.bytes.size())) !=
      DOWNLOAD_DONE) {
    throw std::runtime_error(image.name + ": the download has failed");
  }
}

Recording RecordDownload(const Image &image) {
  return Record([&](const pin_operations &operations) { Play(image, operations); });
}

void PlayAgain(const Image &image, const Recording &recording) {
  SetLevels(recording.levels.data());
  Play(image, kLevels);
}

}  // namespace

Image ReadImage(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  Image image = {path, {std::istreambuf_iterator<char>(file), {}}};
  if (!file) {
    throw std::runtime_error(path + ": cannot be read");
  }
  return image;
}

void MeasureDownload(Results &results, const Effort &effort, const Image &image) {
  const Recording recording = RecordDownload(image);
  const auto replay = [&](void (*by)(const Recording &, const pin_operations &)) {
    SetLevels(recording.levels.data());
    by(recording, kLevels);
  };
  const std::vector<Subject> subjects = {
      {"download", [&] { PlayAgain(image, recording); }},
      {"replay by runs", [&] { replay(ReplayRuns); }},
      {"replay by periods", [&] { replay(ReplayPeriods); }},
      {"replay by calls", [&] { replay(ReplayCalls); }},
  };
  results.AddRounds({"session", "", recording.clocks, image.name, "ns/TCK", 0, 0, 0}, subjects,
                    Measure(subjects, effort), 1, static_cast<double>(recording.clocks));
}

Download MeasureOnce(const Image &image) {
  const Recording recording = RecordDownload(image);
  const std::vector<Subject> subjects = {{"download", [&] { PlayAgain(image, recording); }}};
  return {Median(Measure(subjects, {1, 0, 0})[0]), recording.clocks};
}

}  // namespace bench
