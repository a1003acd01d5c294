// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/input_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/cli/command.h"

namespace tool {
namespace {

constexpr size_t kPieceToRead = 1 << 16;
constexpr size_t kPieceToForget = 1 << 22;

// A file descriptor that is closed unless it is standard input.
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

// Reads to the end; false with errno set if that fails.
bool ReadAll(int fd, std::vector<uint8_t> &bytes) {
  for (;;) {
    const size_t size = bytes.size();
    bytes.resize(size + kPieceToRead);
    const ssize_t got = read(fd, bytes.data() + size, kPieceToRead);
    bytes.resize(size + static_cast<size_t>(got > 0 ? got : 0));
    if (got == 0 || (got < 0 && errno != EINTR)) {
      return got == 0;
    }
  }
}

}  // namespace

tl::expected<InputFile, std::string> InputFile::Open(const std::string &path) {
  const bool standard = path == "-";
  const auto cannot = [&path](const char *why) {
    return tl::unexpected(fmt::format("cannot read {}: {}", path, why));
  };
  Descriptor fd(standard ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status = {};
  if (fd.get() < 0 || fstat(fd.get(), &status) != 0) {
    return cannot(strerror(errno));
  }
  if (S_ISDIR(status.st_mode)) {
    return cannot("it is a directory; name a file");
  }
  InputFile file;
  file.name_ = standard ? "<stdin>" : path;
  if (S_ISREG(status.st_mode) && !standard && status.st_size > 0) {
    const auto size = static_cast<size_t>(status.st_size);
    void *mapping = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd.get(), 0);
    if (mapping == MAP_FAILED) {
      return cannot(strerror(errno));
    }
    madvise(mapping, size, MADV_SEQUENTIAL);
    file.data_ = static_cast<const uint8_t *>(mapping);
    file.size_ = size;
    file.mapped_ = true;
    return file;
  }
  if (!ReadAll(fd.get(), file.read_)) {
    return cannot(strerror(errno));
  }
  file.data_ = file.read_.data();
  file.size_ = file.read_.size();
  return file;
}

InputFile InputFile::OpenOrThrow(const std::string &path) {
  auto file = Open(path);
  if (!file) {
    throw Failure(file.error());
  }
  return std::move(*file);
}

InputFile::InputFile(InputFile &&other) noexcept {
  *this = std::move(other);
}

InputFile &InputFile::operator=(InputFile &&other) noexcept {
  if (this != &other) {
    Unmap();
    name_ = std::move(other.name_);
    data_ = std::exchange(other.data_, nullptr);
    size_ = std::exchange(other.size_, 0);
    forgotten_ = std::exchange(other.forgotten_, 0);
    mapped_ = std::exchange(other.mapped_, false);
    read_ = std::move(other.read_);
  }
  return *this;
}

InputFile::~InputFile() {
  Unmap();
}

void InputFile::Unmap() {
  if (mapped_) {
    munmap(const_cast<uint8_t *>(data_), size_);
    mapped_ = false;
  }
}

void InputFile::Forget(size_t before) {
  if (!mapped_ || before < forgotten_ + kPieceToForget) {
    return;
  }
  const size_t whole = before / kPieceToForget * kPieceToForget;
  madvise(const_cast<uint8_t *>(data_) + forgotten_, whole - forgotten_, MADV_DONTNEED);
  forgotten_ = whole;
}

}  // namespace tool
