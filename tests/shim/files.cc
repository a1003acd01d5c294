// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "shim/files.h"

#include <gtest/gtest.h>
#include <sys/types.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace shim {
namespace {

constexpr ssize_t kInputOutputError = -5;

struct File {
  std::string content;
  int64_t position = 0;
};

struct State {
  std::vector<std::unique_ptr<File>> files;
  bool fail = false;
  size_t reads = 0;
};

State &TheState() {
  static State state;
  return state;
}

File *Find(void *file) {
  for (const auto &open : TheState().files) {
    if (open.get() == file) {
      return open.get();
    }
  }
  ADD_FAILURE() << "files: access to what is no open file";
  return nullptr;
}

ssize_t Read(void *handle, void *buffer, size_t count, int64_t *position) {
  ++TheState().reads;
  File *file = Find(handle);
  if (file == nullptr || TheState().fail) {
    return kInputOutputError;
  }
  if (position == nullptr || *position < 0) {
    ADD_FAILURE() << "files: read without a position in the file";
    return kInputOutputError;
  }
  const size_t start = std::min(static_cast<size_t>(*position), file->content.size());
  const size_t taken = std::min(count, file->content.size() - start);
  std::memcpy(buffer, file->content.data() + start, taken);
  *position += static_cast<int64_t>(taken);
  return static_cast<ssize_t>(taken);
}

}  // namespace

void *OpenFile(std::string content) {
  auto &files = TheState().files;
  files.push_back(std::make_unique<File>());
  files.back()->content = std::move(content);
  return files.back().get();
}

int64_t FilePosition(void *file) {
  const File *open = Find(file);
  return open == nullptr ? -1 : open->position;
}

void FailReads(bool fail) {
  TheState().fail = fail;
}

size_t Reads() {
  return TheState().reads;
}

void ResetFiles() {
  TheState() = State();
}

}  // namespace shim

extern "C" {

ssize_t kernel_read(void *file, void *buffer, size_t count, int64_t *position) {
  return shim::Read(file, buffer, count, position);
}

int64_t *m7_file_pos(void *file) {
  shim::File *open = shim::Find(file);
  return open == nullptr ? nullptr : &open->position;
}

}  // extern "C"
