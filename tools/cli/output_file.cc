// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/cli/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "tools/cli/command.h"

namespace tool {
namespace {

constexpr size_t kWaitingBytes = 1 << 18;

// The temporary file to remove if a signal ends the process; empty for none.
char doomed[PATH_MAX];

extern "C" void RemoveDoomed(int signal) {
  if (doomed[0] != 0) {
    unlink(doomed);
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void RemoveOnSignal(const std::string &path) {
  snprintf(doomed, sizeof doomed, "%s", path.c_str());
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    if (std::signal(number, RemoveDoomed) == SIG_IGN) {
      std::signal(number, SIG_IGN);
    }
  }
}

// The permissions of a new file, as the shell's redirection would give them.
unsigned NewFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

std::string WithoutLinks(const std::string &path) {
  char *resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) {
    return path;
  }
  std::string target = resolved;
  free(resolved);
  return target;
}

}  // namespace

OutputFile::OutputFile(const std::string &path) : name_(path) {
  if (path == "-") {
    name_ = "<stdout>";
    fd_ = STDOUT_FILENO;
  } else {
    OpenTarget(path);
  }
  waiting_.reserve(kWaitingBytes);
}

void OutputFile::OpenTarget(const std::string &path) {
  target_ = WithoutLinks(path);
  struct stat status = {};
  const bool exists = stat(target_.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    if (S_ISDIR(status.st_mode)) {
      throw Failure(fmt::format("cannot write {}: it is a directory; name a file", path));
    }
    fd_ = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd_ < 0) {
      Fail("write");
    }
    return;
  }
  mode_ = exists ? status.st_mode & 0777 : NewFileMode();
  OpenTemporary();
}

void OutputFile::OpenTemporary() {
  const size_t slash = target_.rfind('/');
  const size_t start = slash == std::string::npos ? 0 : slash + 1;
  std::string path = target_.substr(0, start) + "." + target_.substr(start) + ".XXXXXX";
  fd_ = mkostemp(path.data(), O_CLOEXEC);
  if (fd_ < 0) {
    Fail("create a file beside");
  }
  temporary_ = path;
  RemoveOnSignal(temporary_);
}

OutputFile::~OutputFile() {
  if (fd_ > STDOUT_FILENO) {
    close(fd_);
  }
  if (!temporary_.empty()) {
    unlink(temporary_.c_str());
    doomed[0] = 0;
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

void OutputFile::Commit() {
  Flush();
  if (temporary_.empty()) {
    return;
  }
  if (fchmod(fd_, mode_) != 0 || fsync(fd_) != 0) {
    Fail("write");
  }
  if (rename(temporary_.c_str(), target_.c_str()) != 0) {
    Fail("give its name to");
  }
  temporary_.clear();
  doomed[0] = 0;
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

void OutputFile::Fail(const char *what) {
  const int reason = errno;
  throw Failure(fmt::format("cannot {} {}: {}", what, name_, strerror(reason)));
}

}  // namespace tool
