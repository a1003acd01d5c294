// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/board/download.h"

#include <csignal>
#include <filesystem>
#include <string>

#include "tools/cli/text.h"

namespace tool {
namespace {

constexpr auto kBetweenLooks = std::chrono::milliseconds(200);

volatile std::sig_atomic_t interrupts;

extern "C" void CountInterrupt(int) {
  interrupts = interrupts + 1;
}

void Handle(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;  // without SA_RESTART: a wait ends
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool WasInterrupted() {
  return Interrupts::Count() > 0;
}

ExitCode CodeOf(const BoardStatus &status) {
  if (status.error == "none" && status.result == "1") {
    return kDone;
  }
  if (status.error.ends_with(":user-abort")) {
    return kCancelled;
  }
  return status.error.starts_with("preparing:") ? kBad : kFailed;
}

// What the framework takes as a name.
std::string NameOf(const std::string &path) {
  constexpr size_t kMaxName = 250;
  const std::string name = PrintableText(std::filesystem::path(path).filename().string());
  return name.empty() ? "image" : name.substr(0, kMaxName);
}

// What was said of an image is not for the next one.
void Unname(const Device &device) {
  device.Write("image_name", "image");
  device.Write("total_clocks", "0");
}

// Whether the framework has taken the image, and not a signal has come before.
bool HandOver(const Device &device, const std::string &name, tvb::Bytes image,
              uint64_t total_clocks) {
  device.Write("image_name", NameOf(name));
  device.Write("total_clocks", std::to_string(total_clocks));
  bool taken = false;
  try {
    taken = device.HandOver(image, WasInterrupted);
  } catch (const Failure &) {
    device.DropImage();
    Unname(device);
    throw;
  }
  if (!taken) {
    Unname(device);
  }
  return taken;
}

// The image has been handed over.
DownloadEnd Follow(const Device &device,
                   const std::function<void(const BoardStatus &status)> &progress) {
  while (device.IsBusy()) {
    if (Interrupts::Count() > 1) {
      return {kCancelled, true, device.Status()};
    }
    if (WasInterrupted()) {
      device.Cancel();
    }
    device.WaitForChange(kBetweenLooks);
    const BoardStatus status = device.Status();
    if (status.state == "running") {
      progress(status);
    }
  }
  const BoardStatus status = device.Status();
  return {device.RefusedAsBusy() ? kBad : CodeOf(status), false, status};
}

}  // namespace

Interrupts::Interrupts() {
  interrupts = 0;
  Handle(CountInterrupt);
}

Interrupts::~Interrupts() {
  Handle(SIG_DFL);
}

int Interrupts::Count() {
  return interrupts;
}

DownloadEnd DownloadImage(const Device &device, const std::string &name, tvb::Bytes image,
                          uint64_t total_clocks,
                          const std::function<void(const BoardStatus &status)> &progress) {
  if (device.IsBusy()) {
    throw Failure("another download is running");
  }
  if (!HandOver(device, name, image, total_clocks)) {
    return {kCancelled, false, {}};
  }
  try {
    return Follow(device, progress);
  } catch (const Failure &failure) {
    throw Failure(failure.what(), failure.place(), kFailed);
  }
}

}  // namespace tool
