// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <utility>

#include "tools/cli/command.h"
#include "tools/cli/text.h"

namespace tool {
namespace {

constexpr size_t kWaitingBytes = 1 << 18;

// The signals that do not end a process or cannot be caught.
constexpr int kOtherSignals[] = {SIGCHLD, SIGCONT, SIGURG,  SIGWINCH, SIGTSTP,
                                 SIGTTIN, SIGTTOU, SIGSTOP, SIGKILL};

bool EndsTheProcess(int signal) {
  return std::find(std::begin(kOtherSignals), std::end(kOtherSignals), signal) ==
         std::end(kOtherSignals);
}

// Blocks all signals while it lives.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  SignalsBlocked(const SignalsBlocked &) = delete;
  SignalsBlocked &operator=(const SignalsBlocked &) = delete;

 private:
  sigset_t before_;
};

// The permissions of a new file, as the shell's redirection would give them.
unsigned NewFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

std::string WithoutLinks(const std::string &path) {
  std::error_code missing;
  const std::filesystem::path target = std::filesystem::canonical(path, missing);
  return missing ? path : target.string();
}

std::string TemporaryName(const std::string &target) {
  const size_t slash = target.rfind('/');
  const size_t start = slash == std::string::npos ? 0 : slash + 1;
  return fmt::format("{}.{}.XXXXXX", target.substr(0, start), target.substr(start));
}

}  // namespace

// A temporary file that lives as long as the object, but no longer than the process: all of them
// are in a list, and a handler of every signal that would end the process removes what is listed.
// Signals are blocked while the list and the file system change together.
class OutputFile::TemporaryFile {
 public:
  // Creates it beside `target`; fd() is -1 and errno is set if that fails.
  explicit TemporaryFile(const std::string &target) : path_(TemporaryName(target)) {
    const SignalsBlocked blocked;
    CatchSignals();
    fd_ = mkostemp(path_.data(), O_CLOEXEC);
    if (fd_ >= 0) {
      next_ = first;
      first = this;
    }
  }

  ~TemporaryFile() {
    const SignalsBlocked blocked;
    if (Unlist()) {
      unlink(path_.c_str());
    }
  }

  TemporaryFile(const TemporaryFile &) = delete;
  TemporaryFile &operator=(const TemporaryFile &) = delete;

  int fd() const {
    return fd_;
  }

  // Renames the file to `target`; false with errno set if that fails.
  bool Rename(const std::string &target) {
    const SignalsBlocked blocked;
    return rename(path_.c_str(), target.c_str()) == 0 && Unlist();
  }

 private:
  // A signal that is ignored or already has a handler stays as it is.
  static void CatchSignals() {
    struct sigaction action = {};
    action.sa_handler = RemoveAll;
    sigfillset(&action.sa_mask);
    for (int signal = 1; signal < NSIG; ++signal) {
      struct sigaction now = {};
      if (EndsTheProcess(signal) && sigaction(signal, nullptr, &now) == 0 &&
          now.sa_handler == SIG_DFL) {
        sigaction(signal, &action, nullptr);
      }
    }
  }

  // The signal is blocked until the handler returns, and then ends the process.
  static void RemoveAll(int signal) {
    for (const TemporaryFile *file = first; file != nullptr; file = file->next_) {
      unlink(file->path_.c_str());
    }
    std::signal(signal, SIG_DFL);
    raise(signal);
  }

  // False if the file is not in the list.
  bool Unlist() {
    TemporaryFile **link = &first;
    while (*link != nullptr && *link != this) {
      link = &(*link)->next_;
    }
    if (*link == nullptr) {
      return false;
    }
    *link = next_;
    return true;
  }

  static TemporaryFile *first;

  std::string path_;
  int fd_ = -1;
  TemporaryFile *next_ = nullptr;
};

OutputFile::TemporaryFile *OutputFile::TemporaryFile::first = nullptr;

OutputFile::OutputFile(const std::string &path, Order order) : name_(PrintableText(path)) {
  if (path == "-") {
    name_ = "<stdout>";
    fd_ = STDOUT_FILENO;
  } else {
    OpenTarget(path);
  }
  if (order == Order::kAmended && temporary_ == nullptr) {
    HoldBack();
  }
  waiting_.reserve(kWaitingBytes);
}

void OutputFile::OpenTarget(const std::string &path) {
  target_ = WithoutLinks(path);
  struct stat status = {};
  const bool exists = stat(target_.c_str(), &status) == 0;
  if (exists && S_ISDIR(status.st_mode)) {
    throw Failure(fmt::format("cannot write {}: it is a directory; name a file", path));
  }
  if (exists && !S_ISREG(status.st_mode)) {
    fd_ = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd_ < 0) {
      Fail("write");
    }
    return;
  }
  mode_ = exists ? status.st_mode & 0777 : NewFileMode();
  temporary_ = std::make_unique<TemporaryFile>(target_);
  fd_ = temporary_->fd();
  if (fd_ < 0) {
    Fail("create a file beside");
  }
}

OutputFile::~OutputFile() {
  for (const int fd : {fd_, stream_}) {
    if (fd > STDOUT_FILENO) {
      close(fd);
    }
  }
}

void OutputFile::HoldBack() {
  std::error_code none;
  std::filesystem::path folder = std::filesystem::temp_directory_path(none);
  folder = none ? "/tmp" : folder;
  std::string path = (folder / "tvb.XXXXXX").string();
  const SignalsBlocked blocked;
  const int held = mkostemp(path.data(), O_CLOEXEC);
  if (held < 0) {
    throw Failure(fmt::format("cannot hold back {} in a temporary file in {}: {}", name_,
                              PrintableText(folder.string()), strerror(errno)));
  }
  unlink(path.c_str());
  stream_ = std::exchange(fd_, held);
}

void OutputFile::LetGo() {
  const int held = std::exchange(fd_, stream_);
  stream_ = held;
  std::vector<uint8_t> piece(kWaitingBytes);
  ssize_t got = 0;
  for (off_t at = 0; (got = pread(held, piece.data(), piece.size(), at)) != 0; at += got) {
    if (got < 0) {
      Fail("read back");
    }
    WriteNow(piece.data(), static_cast<size_t>(got));
  }
}

void OutputFile::Write(const void *bytes, size_t count) {
  const auto *first = static_cast<const uint8_t *>(bytes);
  if (waiting_.size() + count > kWaitingBytes) {
    Flush();
  }
  if (count > kWaitingBytes) {
    WriteNow(first, count);
  } else {
    waiting_.insert(waiting_.end(), first, first + count);
  }
}

void OutputFile::Amend(uint64_t offset, std::span<const uint8_t> bytes) {
  Flush();
  const ssize_t written = pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
  if (written != static_cast<ssize_t>(bytes.size())) {
    Fail("write");
  }
}

void OutputFile::Commit() {
  Flush();
  if (stream_ >= 0) {
    LetGo();
  }
  if (temporary_ == nullptr) {
    return;
  }
  if (fchmod(fd_, mode_) != 0 || fsync(fd_) != 0) {
    Fail("write");
  }
  if (!temporary_->Rename(target_)) {
    Fail("replace");
  }
}

void OutputFile::Flush() {
  WriteNow(waiting_.data(), waiting_.size());
  waiting_.clear();
}

void OutputFile::WriteNow(const uint8_t *bytes, size_t count) {
  while (count > 0) {
    const ssize_t written = write(fd_, bytes, count);
    if (written < 0 && errno != EINTR) {
      Fail("write");
    }
    if (written > 0) {
      bytes += written;
      count -= static_cast<size_t>(written);
    }
  }
}

void OutputFile::Fail(const char *what) const {
  const int reason = errno;
  throw Failure(fmt::format("cannot {} {}: {}", what, name_, strerror(reason)));
}

}  // namespace tool
