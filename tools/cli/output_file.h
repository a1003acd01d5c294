// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// An output file that appears whole or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// Output to a path. A regular file is written under a temporary name in the target's own directory
// and renamed in Commit(). If the object is destroyed without a Commit(), or a signal ends the
// process, the temporary file is removed and any previous file is untouched. "-" is standard
// output; that and anything but a regular file (a pipe, /dev/null) are written as the bytes arrive.
// All functions throw Failure, naming the path, if the system refuses.
class OutputFile {
 public:
  explicit OutputFile(const std::string &path);
  ~OutputFile();
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;

  // The name for messages: the path with PrintableText(), or "<stdout>".
  const std::string &name() const {
    return name_;
  }

  void Write(const void *bytes, size_t count);
  void Write(std::string_view text) {
    Write(text.data(), text.size());
  }

  // Writes the buffered bytes to disk, then renames the file. Call it once, at the end.
  void Commit();

 private:
  class TemporaryFile;

  void OpenTarget(const std::string &path);
  void Flush();
  void WriteNow(const uint8_t *bytes, size_t count);
  [[noreturn]] void Fail(const char *what) const;

  std::string name_;
  std::string target_;                        // links resolved
  std::unique_ptr<TemporaryFile> temporary_;  // null if the target is written directly
  int fd_ = -1;
  unsigned mode_ = 0;
  std::vector<uint8_t> waiting_;
};

}  // namespace tool
