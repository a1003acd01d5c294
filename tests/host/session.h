// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What the tests of the reader, the decoders and the interpreter start from: a board, a watch on
// its lines, and three ways to hand bytes to the driver.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "guarded.h"
#include "host.h"
#include "image.h"
#include "shim.h"
#include "tap_watch.h"

namespace session {

using image::Bytes;
using shim::Message;
using Messages = std::vector<Message>;

struct KernelFree {
  void operator()(u8 *block) const {
    kfree(block);
  }
};

// A buffer that the driver returned and the test now owns.
using Owned = std::unique_ptr<u8, KernelFree>;

inline Bytes Content(const u8 *bytes, size_t count) {
  return Bytes(bytes, bytes + count);
}

inline Bytes Content(const Owned &bytes, size_t count) {
  return Content(bytes.get(), count);
}

// The characters of a vector as bytes, without the NUL; empty for null.
inline Bytes Characters(const u8 *vector) {
  return vector == nullptr ? Bytes{} : Bytes(vector, vector + strlen((const char *)vector));
}

inline Message Started(uint32_t length) {
  return shim::Log(43, 2, "m7 cplddownload start file len " + std::to_string(length) + "\r\n");
}

inline Message Ended(int32_t code) {
  return shim::Log(43, 2, "m7 cplddownload end rtn_code " + std::to_string(code) + "\r\n");
}

// The end of the file, processing having stopped at `position`.
inline Message Done(uint32_t position) {
  return shim::Log(43, 2, "m7 process done file len " + std::to_string(position) + "\r\n");
}

inline Message Cut() {
  return shim::Printk("Error: command file ends inside a record\n");
}

inline Message BadTag() {
  return shim::Printk("Error: Invalid format when executing process sir or sdr instruction!\n");
}

inline Message BadSirInfo() {
  return shim::Printk("Error: Invalid format when executing read sir information!\n");
}

inline Message BadMode() {
  return shim::Printk("Error: Unkown compress mode\n");
}

inline Message ShiftFailed() {
  return shim::Log(43, 2, "Error: Execute sir/sdr instruction fail!\r\n");
}

inline Message PadFailed() {
  return shim::Log(43, 2, "Exe head or trailer command error\r\n");
}

inline Message UnknownOpcode() {
  return shim::Log(43, 2, "Error: invalid file format, unkown opcode\r\n");
}

inline Message VerifyFailed() {
  return shim::Log(43, 2, "Verify Failed\r\n");
}

inline Message NoIdcode() {
  return shim::Log(43, 2, "Error: Cannot Read CHIP IDCODE\r\n");
}

// The five records of an IDCODE read that gave eight hexadecimal digits.
inline Messages Idcode(const std::string &digits) {
  Messages messages = {shim::Log(43, 2, "DECODE CHIP : ")};
  for (size_t i = 0; i < 8; i += 2) {
    messages.push_back(shim::Log(43, 2, digits.substr(i, 2)));
  }
  return messages;
}

inline Messages Join(std::initializer_list<Messages> parts) {
  Messages all;
  for (const Messages &part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

// What the watch sees of a download's reset and of its IDCODE read in a chain of one.
inline std::string Opening() {
  return "reset, IR 01100000, DR " + std::string(32, '1');
}

class SessionTest : public shim::Test {
 protected:
  // Blocks are raw unless a test or a file's header says otherwise.
  SessionTest() {
    pins_.Select();
    g_compress = image::kRaw;
  }

  // Makes `bytes` the image that the readers see, outside a download, the position at its start.
  void Load(const Bytes &bytes) {
    image_.emplace(bytes);
    g_tvb_buffer = image_->data();
    g_tvb_length = image_->size();
    g_pos = 0;
  }

  // Runs the main loop over records without a header, outside a download.
  s32 Play(const Bytes &records) {
    Load(records);
    g_cfg_start_pos = 0;
    return Quorlan_ProcessCmd(records.size());
  }

  // A whole download of a file image.
  s32 Download(const Bytes &file) {
    image_.emplace(file);
    return TvbToVec(static_cast<download_context *>(pins_.context()), image_->data(),
                    static_cast<u32>(file.size()));
  }

  shim::Pins pins_;
  TapWatch watch_{pins_};
  std::optional<Guarded> image_;
};

}  // namespace session
