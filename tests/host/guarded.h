// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// A copy of some bytes that ends where readable memory ends: the next byte faults in every build,
// and the bytes before the copy are poisoned where the address sanitizer watches.
#pragma once

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

class Guarded {
 public:
  explicit Guarded(const std::vector<uint8_t> &bytes) : size_(bytes.size()) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    room_ = (size_ / page + 1) * page;
    void *map =
        mmap(nullptr, room_ + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED || mprotect(static_cast<uint8_t *>(map) + room_, page, PROT_NONE) != 0) {
      throw std::runtime_error("no guarded memory");
    }
    map_ = static_cast<uint8_t *>(map);
    mapped_ = room_ + page;
    if (size_ != 0) {
      std::memcpy(data(), bytes.data(), size_);
    }
    ASAN_POISON_MEMORY_REGION(map_, room_ - size_);
  }
  ~Guarded() {
    ASAN_UNPOISON_MEMORY_REGION(map_, room_ - size_);
    munmap(map_, mapped_);
  }
  Guarded(const Guarded &) = delete;
  Guarded &operator=(const Guarded &) = delete;

  uint8_t *data() const {
    return map_ + room_ - size_;
  }
  size_t size() const {
    return size_;
  }

 private:
  size_t size_;
  size_t room_ = 0;
  size_t mapped_ = 0;
  uint8_t *map_ = nullptr;
};
