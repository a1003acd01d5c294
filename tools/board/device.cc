// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/board/device.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/cli/command.h"
#include "tools/cli/text.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

// The driver's own reads of the IDCODE, which come before a file's.
constexpr uint64_t kOwnReads = 32;

// A system call on a file, repeated when a signal came in between. Throws Failure.
class Attribute {
 public:
  Attribute(const std::string &path, int flags)
      : path_(path), fd_(open(path.c_str(), flags | O_CLOEXEC)) {
    if (fd_ < 0) {
      Fail(flags & O_WRONLY ? "write" : "read");
    }
  }
  ~Attribute() {
    close(fd_);
  }
  Attribute(const Attribute &) = delete;
  Attribute &operator=(const Attribute &) = delete;

  int fd() const {
    return fd_;
  }

  std::string Read() const {
    std::array<char, 4096> text;
    ssize_t count = 0;
    while ((count = read(fd_, text.data(), text.size())) < 0) {
      Retry("read");
    }
    return {text.data(), static_cast<size_t>(count)};
  }

  // Returns how many bytes the system took.
  size_t Write(const void *bytes, size_t count) const {
    ssize_t written = 0;
    while ((written = write(fd_, bytes, count)) < 0) {
      Retry("write");
    }
    return static_cast<size_t>(written);
  }

 private:
  void Retry(const char *what) const {
    if (errno != EINTR) {
      Fail(what);
    }
  }
  [[noreturn]] void Fail(const char *what) const {
    throw Failure(fmt::format("cannot {} {}: {}", what, PrintableText(path_), strerror(errno)));
  }

  std::string path_;
  int fd_;
};

bool HasAttributes(const fs::path &folder) {
  std::error_code ignored;
  return fs::exists(folder / "last_read", ignored) && fs::exists(folder / "state", ignored);
}

std::string FindDevice() {
  constexpr const char *kUsual = "/sys/devices/platform/cpldjtag";
  if (HasAttributes(kUsual)) {
    return kUsual;
  }
  std::error_code error;
  const auto skip = fs::directory_options::skip_permission_denied;
  for (fs::recursive_directory_iterator at("/sys/devices", skip, error), end; !error && at != end;
       at.increment(error)) {
    if (at->path().filename() == "last_read" && HasAttributes(at->path().parent_path())) {
      return at->path().parent_path();
    }
  }
  throw Failure(
      "there is no device of the framework here: is cpldjtag loaded, and has it its lines?");
}

// The folder of the device takes images itself where the kernel has no class for them.
std::string FindUpload(const std::string &folder) {
  for (const std::string &upload :
       {folder, folder + "/firmware/cpldjtag", std::string("/sys/class/firmware/cpldjtag")}) {
    std::error_code ignored;
    if (fs::exists(upload + "/loading", ignored)) {
      return upload;
    }
  }
  throw Failure("the framework takes no images: there is no 'loading'", PrintableText(folder));
}

uint64_t NumberOf(const std::string &text) {
  uint64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::optional<BoardRead> ReadOf(const std::string &text) {
  const size_t space = text.find(' ');
  if (space == std::string::npos) {
    return std::nullopt;
  }
  return BoardRead{NumberOf(text), NumberOf(text.substr(space + 1)) != 0};
}

}  // namespace

std::string BoardTimeText(uint64_t ms) {
  constexpr uint64_t kMsInSecond = 1000;
  constexpr uint64_t kMsInMinute = 60 * kMsInSecond;
  constexpr uint64_t kNsInMs = 1000000;
  if (ms == 0) {
    return "less than 1 ms";
  }
  if (ms < kMsInSecond) {
    return fmt::format("{} ms", ms);
  }
  return ms < kMsInMinute ? fmt::format("{}.{} s", ms / kMsInSecond, ms % kMsInSecond / 100)
                          : TimeText(ms * kNsInMs);
}

bool BoardStatus::EndedComparing() const {
  return result == "0" && error == "programming:hw-error" && reads > kOwnReads && last_read &&
         last_read->clock == clocks;
}

Device::Device(const std::string &folder) : folder_(folder.empty() ? FindDevice() : folder) {
  if (!HasAttributes(folder_)) {
    throw Failure("this is no folder of the framework's attributes", PrintableText(folder_));
  }
  upload_ = FindUpload(folder_);
}

std::string Device::Read(const std::string &attribute) const {
  std::string text = Attribute(folder_ + '/' + attribute, O_RDONLY).Read();
  text.erase(text.find_last_not_of('\n') + 1);
  return text;
}

void Device::Write(const std::string &attribute, const std::string &text) const {
  Attribute(folder_ + '/' + attribute, O_WRONLY | O_TRUNC).Write(text.data(), text.size());
}

BoardStatus Device::Status() const {
  return {Read("state"),
          Read("result"),
          Read("error"),
          Read("file"),
          Read("crc"),
          NumberOf(Read("clocks")),
          NumberOf(Read("total_clocks")),
          NumberOf(Read("elapsed_ms")),
          NumberOf(Read("reads")),
          ReadOf(Read("last_read"))};
}

void Device::SendImage(tvb::Bytes image, bool (*interrupted)()) const {
  constexpr size_t kPiece = 1 << 16;
  const Attribute data(upload_ + "/data", O_WRONLY | O_TRUNC);
  for (size_t sent = 0; sent < image.size() && !interrupted();) {
    sent += data.Write(image.data() + sent, std::min(kPiece, image.size() - sent));
  }
}

bool Device::HandOver(tvb::Bytes image, bool (*interrupted)()) const {
  const std::string loading = upload_ + "/loading";
  Attribute(loading, O_WRONLY | O_TRUNC).Write("1", 1);
  SendImage(image, interrupted);
  const bool whole = !interrupted();
  const std::string_view step = whole ? "0" : "-1";
  Attribute(loading, O_WRONLY | O_TRUNC).Write(step.data(), step.size());
  return whole;
}

bool Device::IsBusy() const {
  const std::string status = Attribute(upload_ + "/status", O_RDONLY).Read();
  return status != "idle\n" || Read("state") != "idle";
}

void Device::WaitForChange(std::chrono::milliseconds longest) const {
  const Attribute state(folder_ + "/state", O_RDONLY);
  if (state.Read() == "idle\n") {
    longest = std::min(longest, std::chrono::milliseconds(20));  // the image is on its way
  }
  pollfd change = {state.fd(), POLLPRI, 0};
  poll(&change, 1, static_cast<int>(longest.count()));
}

void Device::Try(const std::string &attribute, std::string_view text) {
  const Attribute tried(attribute, O_WRONLY | O_TRUNC);
  [[maybe_unused]] const ssize_t ignored = write(tried.fd(), text.data(), text.size());
}

void Device::DropImage() const {
  Try(upload_ + "/loading", "-1");
}

void Device::Cancel() const {
  Try(folder_ + "/cancel", "1");
}

bool Device::RefusedAsBusy() const {
  std::error_code ignored;
  return upload_ != folder_ && fs::exists(upload_ + "/error", ignored) &&
         Attribute(upload_ + "/error", O_RDONLY).Read().ends_with(":device-busy\n");
}

}  // namespace tool
