// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tvb/writer.h"

#include <string>
#include <utility>

#include "tvb/block_encoder.h"
#include "tvb/number.h"

namespace tvb {

Writer::Writer(const FileHeader &header) : Writer(header, nullptr) {
  AppendHeader(pending_, header);
}

Writer::Writer(const FileHeader &header, Sink sink)
    : sink_(std::move(sink)), plain_(header.compression == kPlainBlocks) {
  if (!plain_) {
    encode_ = BlockEncoder();
  }
}

void Writer::Encode(const BlockChoice &choice) {
  Encode(BlockEncoder(choice));
}

void Writer::Encode(Encoder encode) {
  if (plain_) {
    throw Error("the header says that blocks are plain; no encoding can be chosen");
  }
  encode_ = std::move(encode);
}

void Writer::Opening(uint32_t before, uint32_t after, uint8_t instruction) {
  constexpr uint32_t kMaxDevices = kMaxNumber / kInstructionBits;
  if (!empty_) {
    throw Error("the player looks for the target in the first record only; open the file with it");
  }
  if (instruction == kBypass) {
    throw Error("the target's instruction must differ from BYPASS (0xFF); take IDCODE");
  }
  if (before >= kMaxDevices || after >= kMaxDevices - before) {
    throw Error("a chain of so many devices does not fit into a shift");
  }
  const Buffer chain = ChainInstructions({before, after}, instruction);
  Sir(static_cast<uint32_t>(kInstructionBits * chain.size()), chain);
}

void Writer::Sir(uint32_t bits, Bytes tdi, Bytes tdo, Bytes mask) {
  Scan(kSir, {bits, tdi, tdo, mask});
}

void Writer::Sdr(uint32_t bits, Bytes tdi, Bytes tdo, Bytes mask) {
  Scan(kSdr, {bits, tdi, tdo, mask});
}

void Writer::Scan(Opcode opcode, const Shift &shift) {
  record_.resize(kRecordFront);
  AppendShiftBody(record_, shift, encode_);
  PutRecord(opcode);
}

void Writer::Hir(uint32_t bits, Bytes data) {
  Put(kHir, PadBody(bits, data));
}

void Writer::Tir(uint32_t bits, Bytes data) {
  Put(kTir, PadBody(bits, data));
}

void Writer::Hdr(uint32_t bits, Bytes data) {
  Put(kHdr, PadBody(bits, data));
}

void Writer::Tdr(uint32_t bits, Bytes data) {
  Put(kTdr, PadBody(bits, data));
}

void Writer::ClearPads() {
  Hir(0, {});
  Tir(0, {});
  Hdr(0, {});
  Tdr(0, {});
}

void Writer::RunTest(uint64_t cycles, std::chrono::microseconds time) {
  if (time.count() < 0) {
    throw Error("a run-test cannot take less than no time");
  }
  uint64_t microseconds = static_cast<uint64_t>(time.count());
  ClockRate rate = rate_;
  rate.Run();
  // A later pass of a loop may run at another frequency than the first.
  bool whole_kilohertz = !in_loop_ && rate.Exact() && IsWholeKilohertz(*rate.Exact());
  Buffer body = RunTestBody(microseconds, cycles, whole_kilohertz);
  if (rate.Highest() &&
      RunTestClocks(microseconds, cycles, whole_kilohertz, *rate.Highest()) > kMaxCycles) {
    throw Error("the run-test takes more clocks at " + std::to_string(*rate.Highest()) +
                " Hz than the player can count; write several run-tests");
  }
  Put(kRunTest, body);
  rate_ = rate;
}

void Writer::RunTest(std::chrono::microseconds time) {
  RunTest(0, time);
}

void Writer::Frequency(uint32_t hz) {
  if (hz > kMaxNumber) {
    throw Error("a frequency of 2^31 Hz or more would be taken as negative");
  }
  Put(kFrequency, NumberBody(hz));
  rate_.Set(hz);
}

void Writer::FreshFrequency(uint32_t hz) {
  if (hz == 0 || hz > kMaxNumber) {
    throw Error("a frequency is 1 Hz to 2^31 - 1 Hz, not " + std::to_string(hz));
  }
  Frequency(0);
  Frequency(hz);
}

void Writer::BeginLoop(uint32_t count) {
  if (in_loop_) {
    throw Error("loops do not nest: the player has one counter; end the open loop first");
  }
  if (count == 0 || count > kMaxNumber) {
    throw Error("a loop is played 1 to 2^31 - 1 times, not " + std::to_string(count) +
                "; for none leave its records out");
  }
  Put(kLoop, NumberBody(count));
  in_loop_ = true;
}

void Writer::EndLoop() {
  if (!in_loop_) {
    throw Error("no loop is open; begin one first");
  }
  Put(kEndLoop, {});
  in_loop_ = false;
}

void Writer::Reserved(uint8_t opcode, Bytes body) {
  if (!IsReserved(opcode)) {
    throw Error("the reserved opcodes are 1, 5, 6 and 19, not " + std::to_string(opcode));
  }
  Put(opcode, body);
}

void Writer::Record(uint8_t opcode, Bytes body) {
  Put(opcode, body);
}

Buffer Writer::Finish() {
  if (in_loop_) {
    throw Error("a loop is still open; end it before the file");
  }
  Put(kRunTest, IdleRunTestBody());
  return FinishUnguarded();
}

Buffer Writer::FinishUnguarded() {
  CheckOpen();
  if (in_loop_) {
    throw Error("a loop is still open; end it before the file");
  }
  finished_ = true;
  return Take();
}

Buffer Writer::Take() {
  taken_ += pending_.size();
  return std::exchange(pending_, {});
}

uint64_t Writer::size() const {
  return taken_ + pending_.size();
}

void Writer::Put(uint8_t opcode, Bytes body) {
  record_.resize(kRecordFront);
  Append(record_, body);
  PutRecord(opcode);
}

void Writer::PutRecord(uint8_t opcode) {
  CheckOpen();
  const Bytes record = FrameRecord(record_, opcode);
  empty_ = false;
  if (sink_) {
    taken_ += record.size();
    sink_(record);
  } else {
    Append(pending_, record);
  }
}

void Writer::CheckOpen() const {
  if (finished_) {
    throw Error("the file is finished; begin another one");
  }
}

}  // namespace tvb
