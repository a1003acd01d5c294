// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// LZW streams from codes that a test chooses, what such codes mean, and streams with restarts,
// which no encoder writes.
#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace lzw {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kClear = 256;

// The counter that both sides of a stream keep in step.
class Counter {
 public:
  explicit Counter(uint32_t parameter) : codes_(512u << parameter) {}

  uint32_t next() const {
    return next_;
  }
  void Step(uint32_t code) {
    if (code == kClear) {
      next_ = 257;
      fresh_ = true;
    } else if (fresh_) {
      ++next_;
      fresh_ = false;
    } else {
      next_ = next_ + 1 == codes_ ? 257 : next_ + 1;
    }
  }

 private:
  uint32_t codes_;
  uint32_t next_ = 257;
  bool fresh_ = true;
};

// Packs codes, least significant bit of each byte first, behind the parameter byte.
class Stream {
 public:
  explicit Stream(uint32_t parameter)
      : counter_(parameter), bytes_{static_cast<uint8_t>(parameter)} {}

  uint32_t next() const {
    return counter_.next();
  }

  // Writes a code, 0 to next() - 1, in truncated binary.
  Stream &Put(uint32_t code) {
    Write(code);
    counter_.Step(code);
    return *this;
  }

  // Ends the stream and returns its bytes; the last one is filled up with zeros.
  Bytes End() {
    Write(counter_.next());
    return bytes_;
  }

 private:
  void Write(uint32_t code) {
    const uint32_t next = counter_.next();
    const uint32_t width = next < 512 ? 8 : next < 1024 ? 9 : next < 2048 ? 10 : 11;
    const uint32_t threshold = (2u << width) - next - 1;
    if (code < threshold) {
      Bits(code, width);
    } else {
      Bits((code + threshold) >> 1, width);
      Bits((code + threshold) & 1, 1);
    }
  }

  void Bits(uint32_t value, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
      if (used_ == 0) {
        bytes_.push_back(0);
      }
      bytes_.back() = static_cast<uint8_t>(bytes_.back() | (value >> i & 1) << used_);
      used_ = (used_ + 1) % 8;
    }
  }

  Counter counter_;
  Bytes bytes_;
  uint32_t used_ = 0;
};

// The bytes that codes stand for.
class Model {
 public:
  explicit Model(uint32_t parameter) : counter_(parameter) {}

  void Put(uint32_t code) {
    const uint32_t last = counter_.next() - 1;
    if (code == kClear) {
      previous_.clear();
    } else if (previous_.empty()) {
      previous_ = {static_cast<uint8_t>(code)};
      Emit(previous_);
    } else {
      Bytes text = code < 256     ? Bytes{static_cast<uint8_t>(code)}
                   : code == last ? previous_
                                  : strings_.at(code);
      Bytes defined = previous_;
      defined.push_back(text.front());
      if (code == last) {
        text = defined;
      }
      strings_[last] = defined;
      Emit(text);
      previous_ = text;
    }
    counter_.Step(code);
  }

  uint32_t next() const {
    return counter_.next();
  }
  const Bytes &output() const {
    return output_;
  }

 private:
  void Emit(const Bytes &text) {
    output_.insert(output_.end(), text.begin(), text.end());
  }

  Counter counter_;
  std::map<uint32_t, Bytes> strings_;
  Bytes previous_;
  Bytes output_;
};

// The stream of `data` with a restart after each `every` codes; 0: none. Each code stands for the
// longest string that has one.
inline Bytes Restarting(const Bytes &data, uint32_t parameter, size_t every) {
  Stream stream(parameter);
  if (data.empty()) {
    return stream.End();
  }
  std::map<std::pair<uint32_t, uint8_t>, uint32_t> strings;
  uint32_t string = data.front();
  size_t codes = 0;
  for (size_t at = 1; at < data.size(); ++at) {
    const auto longer = strings.find({string, data[at]});
    if (longer != strings.end()) {
      string = longer->second;
      continue;
    }
    stream.Put(string);
    if (++codes == every) {
      stream.Put(kClear);
      codes = 0;
    }
    if (stream.next() == 257) {
      strings.clear();
    } else {
      strings[{string, data[at]}] = stream.next() - 1;
    }
    string = data[at];
  }
  return stream.Put(string).End();
}

}  // namespace lzw
