// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// An output file that appears whole or not at all.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// Output to a path. A regular file is written under a temporary name in the target's own directory
// and renamed in Commit(). If the object is destroyed without a Commit(), or a signal ends the
// process, the temporary file is removed and any previous file is untouched. "-" is standard
// output; that and anything but a regular file (a pipe, /dev/null) are written as the bytes arrive,
// or in Commit() if the file is to be amended: until then they are in a temporary file without a
// name. All functions throw Failure, naming the path, if the system refuses.
class OutputFile {
 public:
  enum class Order { kAsWritten, kAmended };

  explicit OutputFile(const std::string &path, Order order = Order::kAsWritten);
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

  // Replaces bytes that were written before. Only for a file with Order::kAmended.
  void Amend(uint64_t offset, std::span<const uint8_t> bytes);

  // Writes the buffered bytes to disk, then renames the file. Call it once, at the end.
  void Commit();

 private:
  class TemporaryFile;

  void OpenTarget(const std::string &path);
  void HoldBack();
  void LetGo();
  void Flush();
  void WriteNow(const uint8_t *bytes, size_t count);
  [[noreturn]] void Fail(const char *what) const;

  std::string name_;
  std::string target_;                        // links resolved
  std::unique_ptr<TemporaryFile> temporary_;  // null if the target is written directly
  int fd_ = -1;
  int stream_ = -1;  // what gets the bytes that are held back in fd_; -1 if none are
  unsigned mode_ = 0;
  std::vector<uint8_t> waiting_;
};

}  // namespace tool
