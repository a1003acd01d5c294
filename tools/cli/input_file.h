// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A file to read, as one run of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tl/expected.hpp>
#include <vector>

namespace tool {

// The bytes of a file: mapped if it is a file proper, read whole if it is a pipe or standard input.
// They are good as long as the object.
class InputFile {
 public:
  // Opens the file of that path, standard input for "-". An error is a whole sentence that names
  // the path.
  static tl::expected<InputFile, std::string> Open(const std::string &path);

  // The same; throws Failure.
  static InputFile OpenOrThrow(const std::string &path);

  InputFile(InputFile &&other) noexcept;
  InputFile &operator=(InputFile &&other) noexcept;
  ~InputFile();

  // The path, or "<stdin>": what messages call it.
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

  // Says that nothing before that offset will be read again soon: a mapped file's pages there need
  // not stay in memory. Reading them all the same is allowed.
  void Forget(size_t before);

 private:
  InputFile() = default;
  void Unmap();

  std::string name_;
  const uint8_t *data_ = nullptr;
  size_t size_ = 0;
  size_t forgotten_ = 0;
  bool mapped_ = false;
  std::vector<uint8_t> read_;  // what was not mapped
};

}  // namespace tool
