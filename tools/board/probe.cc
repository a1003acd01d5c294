// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/board/probe.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

#include "tools/board/download.h"
#include "tools/cli/text.h"
#include "tvb/play_order.h"
#include "tvb/reader.h"
#include "tvb/seal.h"
#include "tvb/writer.h"

namespace tool {
namespace {

// The last one in the driver's messages.
std::optional<uint32_t> FindIdcodeIn(std::string_view log) {
  constexpr std::string_view kBefore = "DECODE CHIP : ";
  constexpr size_t kDigits = 8;
  const size_t at = log.rfind(kBefore);
  if (at == log.npos) {
    return std::nullopt;
  }
  const std::string_view digits = log.substr(at + kBefore.size(), kDigits);
  uint32_t idcode = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), idcode, 16);
  return result.ptr == digits.data() + kDigits ? std::optional(idcode) : std::nullopt;
}

}  // namespace

KernelLog::KernelLog(const std::string &path) {
  const std::string name = path.empty() ? "/dev/kmsg" : path;
  fd_ = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd_ < 0) {
    throw Failure(fmt::format("cannot read {}: {}", PrintableText(name), strerror(errno)));
  }
  lseek(fd_, 0, SEEK_END);
}

KernelLog::~KernelLog() {
  close(fd_);
}

// The kernel gives one message at a time, and EPIPE where some were lost.
std::string KernelLog::Read() {
  std::string text;
  std::array<char, 8192> piece;
  ssize_t count = 0;
  while ((count = read(fd_, piece.data(), piece.size())) > 0 || (count < 0 && errno == EPIPE)) {
    text.append(piece.data(), count < 0 ? 0 : static_cast<size_t>(count));
  }
  return text;
}

tvb::Buffer ProbeFile(const tvb::ChainPlace &place) {
  tvb::Writer writer;
  writer.Opening(place.before, place.after);
  tvb::Buffer image = writer.Finish();
  tvb::Seal(image);
  return image;
}

uint32_t ProbeIdcode(const Device &device, const std::string &log, const tvb::ChainPlace &place) {
  KernelLog messages(log);
  const tvb::Buffer image = ProbeFile(place);
  const DownloadEnd end =
      DownloadImage(device, "tvb probe", image, tvb::DownloadClocks(image, tvb::ReadHeader(image)),
                    [](const BoardStatus &) {});
  if (end.code == kCancelled) {
    throw Failure("the read of the IDCODE was cancelled", "", kCancelled);
  }
  if (end.code != kDone) {
    throw Failure(
        fmt::format("the read of the IDCODE failed: {}; see the kernel log", end.status.error), "",
        end.code);
  }
  const std::optional<uint32_t> idcode = FindIdcodeIn(messages.Read());
  if (!idcode) {
    throw Failure("the kernel log does not have the IDCODE that the driver has read");
  }
  return *idcode;
}

std::string WhyNoIdcode(uint32_t idcode) {
  if (idcode == 0 || idcode == 0xFFFFFFFF) {
    return fmt::format("nothing answers ({:08X}): is the chain powered?", idcode);
  }
  return (idcode & 1) == 0 ? fmt::format("no IDCODE: {:08X} was read", idcode) : "";
}

}  // namespace tool
