// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/input_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <utility>

#include "svf/parser.h"
#include "svf/text.h"
#include "tools/cli/command.h"
#include "tools/cli/report.h"
#include "tools/cli/text.h"
#include "tvb/reader.h"
#include "tvb/text.h"

namespace tool {
namespace {

constexpr size_t kPieceToRead = 1 << 16;
constexpr size_t kPieceToForget = 1 << 22;

// A file descriptor, closed on destruction unless it is standard input.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ > STDIN_FILENO) {
      close(fd_);
    }
  }
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;
  int get() const {
    return fd_;
  }

 private:
  int fd_;
};

bool BeginsWithSvf(std::string_view text) {
  try {
    svf::Statement first;
    return svf::Parser(text).Next(first);
  } catch (const svf::Error &) {
    return false;
  }
}

bool HasExtension(std::string_view name, std::string_view extension) {
  return name.size() > extension.size() &&
         std::ranges::equal(name.substr(name.size() - extension.size()), extension,
                            [](char a, char b) { return std::tolower(a) == b; });
}

}  // namespace

InputFile::InputFile(const std::string &path) {
  const bool standard = path == "-";
  name_ = standard ? "<stdin>" : PrintableText(path);
  const Descriptor fd(standard ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status = {};
  if (fd.get() < 0 || fstat(fd.get(), &status) != 0) {
    Fail(strerror(errno));
  }
  if (S_ISDIR(status.st_mode)) {
    Fail("it is a directory; name a file");
  }
  if (S_ISREG(status.st_mode) && !standard && status.st_size > 0) {
    Map(fd.get(), static_cast<size_t>(status.st_size));
  } else {
    ReadAll(fd.get());
  }
}

InputFile::InputFile(std::string name, std::vector<uint8_t> bytes)
    : name_(std::move(name)), read_(std::move(bytes)) {
  data_ = read_.data();
  size_ = read_.size();
}

InputFile::~InputFile() {
  if (mapped_) {
    munmap(const_cast<uint8_t *>(data_), size_);
  }
}

void InputFile::Map(int fd, size_t size) {
  void *mapping = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  if (mapping == MAP_FAILED) {
    Fail(strerror(errno));
  }
  madvise(mapping, size, MADV_SEQUENTIAL);
  data_ = static_cast<const uint8_t *>(mapping);
  size_ = size;
  mapped_ = true;
}

void InputFile::ReadAll(int fd) {
  ssize_t got = 0;
  do {
    const size_t size = read_.size();
    read_.resize(size + kPieceToRead);
    got = read(fd, read_.data() + size, kPieceToRead);
    read_.resize(size + static_cast<size_t>(got > 0 ? got : 0));
  } while (got > 0 || (got < 0 && errno == EINTR));
  if (got < 0) {
    Fail(strerror(errno));
  }
  data_ = read_.data();
  size_ = read_.size();
}

void InputFile::Forget(size_t before) {
  if (!mapped_ || before < forgotten_ + kPieceToForget) {
    return;
  }
  const size_t whole = before / kPieceToForget * kPieceToForget;
  madvise(const_cast<uint8_t *>(data_) + forgotten_, whole - forgotten_, MADV_DONTNEED);
  forgotten_ = whole;
}

void InputFile::Fail(const char *reason) const {
  throw Failure(fmt::format("cannot read {}: {}", name_, reason));
}

bool IsSvf(const InputFile &file) {
  const tvb::Bytes bytes = {file.data(), file.size()};
  return tvb::ReadHeader(bytes).fault &&
         (HasExtension(file.name(), ".svf") || BeginsWithSvf(file.text()));
}

TvbFile::TvbFile(const std::string &path) : TvbFile(std::make_unique<InputFile>(path)) {}

TvbFile::TvbFile(std::unique_ptr<InputFile> file)
    : file_(std::move(file)), header_(tvb::ReadHeader(image())) {
  if (header_.fault && BeginsWithSvf(file_->text())) {
    throw Failure("this looks like an SVF file; make a TVB file of it with tvb compile", name());
  }
  if (header_.fault) {
    throw Failure(header_.fault->message, Where(header_.fault->offset));
  }
}

std::string TvbFile::Where(uint64_t offset, uint64_t record) const {
  const std::string place = fmt::format("{}: offset {}", name(), tvb::Hex(offset));
  return record == 0 ? place : fmt::format("{} (record {})", place, record);
}

void TellFinding(const TvbFile &file, const tvb::Finding &finding) {
  const auto print = finding.severity == tvb::Severity::kWarning ? Warning : Error;
  print(file.Where(finding.offset, finding.record), finding.message);
}

}  // namespace tool
