// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// An input file as one run of bytes; and a TVB file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tvb/bytes.h"
#include "tvb/finding.h"
#include "tvb/reader.h"

namespace tool {

// The bytes of a file: mapped if it is a regular file, read whole if it is a pipe or standard
// input. They are valid as long as the object.
class InputFile {
 public:
  // Opens the file at that path; "-" is standard input. Throws Failure, naming the path, if it
  // cannot be read.
  explicit InputFile(const std::string &path);

  // Bytes that are no file, under a name for messages.
  InputFile(std::string name, std::vector<uint8_t> bytes);
  ~InputFile();
  InputFile(const InputFile &) = delete;
  InputFile &operator=(const InputFile &) = delete;

  // The name for messages: the path with PrintableText(), or "<stdin>".
  const std::string &name() const {
    return name_;
  }
  const uint8_t *data() const {
    return data_;
  }
  size_t size() const {
    return size_;
  }
  std::string_view text() const {
    return {reinterpret_cast<const char *>(data_), size_};
  }

  // Hints that nothing before that offset will be read again soon, so that a mapped file's pages
  // there can leave memory. Reading them again is still allowed.
  void Forget(size_t before);

 private:
  void Map(int fd, size_t size);
  void ReadAll(int fd);
  [[noreturn]] void Fail(const char *reason) const;

  std::string name_;
  const uint8_t *data_ = nullptr;
  size_t size_ = 0;
  size_t forgotten_ = 0;
  bool mapped_ = false;
  std::vector<uint8_t> read_;  // the content if it is not mapped
};

// True if the file is SVF: its first statement is, or it has no TVB header but the extension .svf.
bool IsSvf(const InputFile &file);

// An open TVB file with a valid header.
class TvbFile {
 public:
  // Throws Failure if the file cannot be read or has no TVB header.
  explicit TvbFile(const std::string &path);

  explicit TvbFile(std::unique_ptr<InputFile> file);

  // Valid as long as this object.
  tvb::Bytes image() const {
    return {file_->data(), file_->size()};
  }
  const tvb::HeaderView &header() const {
    return header_;
  }
  const std::string &name() const {
    return file_->name();
  }

  // The place for a message: "FILE: offset 0x1A2 (record 7)". `record` is 0 if the message belongs
  // to no record.
  std::string Where(uint64_t offset, uint64_t record = 0) const;

  // As InputFile::Forget().
  void Forget(uint64_t before) {
    file_->Forget(static_cast<size_t>(before));
  }

 private:
  std::unique_ptr<InputFile> file_;
  tvb::HeaderView header_;
};

// Prints what a check has found in the file, as an error or a warning at its place.
void TellFinding(const TvbFile &file, const tvb::Finding &finding);

}  // namespace tool
