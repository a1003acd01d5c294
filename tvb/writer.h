// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Writes a TVB command file, record by record.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "tvb/block.h"
#include "tvb/bytes.h"
#include "tvb/error.h"
#include "tvb/header.h"
#include "tvb/player.h"
#include "tvb/record.h"

namespace tvb {

// A file being written. Every call appends whole records of exact length; a call that throws Error
// appends none. See Bytes for the bit order of register data in arguments: the first bit out is the
// most significant bit of the first byte.
//
// The caller must deal with what the player keeps from one download to the next; FreshFrequency()
// helps with the frequency and ClearPads() with the header and trailer registers.
class Writer {
 public:
  // Receives the records as they are written, one per call; the bytes are valid during the call
  // only.
  using Sink = std::function<void(Bytes record)>;

  // Begins the file with `header`. If that says kPlainBlocks, blocks have no choice of encoding.
  // The output is kept for Take() and Finish().
  explicit Writer(const FileHeader &header = {});

  // The same, but passes every record to `sink` at once. The sink must already have the header,
  // from AppendHeader(). Nothing is left for Take().
  Writer(const FileHeader &header, Sink sink);

  // Sets how the data of later SIR and SDR records is encoded; the default is a BlockEncoder's
  // smallest block. Throws Error in a file of plain blocks, and for a choice as EncodeBlock() does.
  void Encode(const BlockChoice &choice);
  void Encode(Encoder encode);

  // Writes the record that tells the player where the target is in the chain. The player looks only
  // at the first record for this, so it must be the first; otherwise throws Error. `before` devices
  // lie between TDI and the target, `after` between the target and TDO. The record shifts all ones
  // (BYPASS) into each of them and `instruction` into the target, with 8 bits for every instruction
  // register, and compares nothing. `instruction` goes out least significant bit first. It should
  // be harmless, such as IDCODE; 0xE0 makes the player read the IDCODE with that instruction from
  // now on. Throws Error for 0xFF, which is indistinguishable from BYPASS.
  void Opening(uint32_t before, uint32_t after, uint8_t instruction = kIdcode);

  // Shifts `bits` bits of `tdi` through the instruction or the data register. TDO is compared with
  // `tdo` where `mask` has a 1; without a mask nothing is compared. An empty argument is absent.
  // Throws Error as AppendShiftBody() and AppendRecord() do.
  void Sir(uint32_t bits, Bytes tdi, Bytes tdo = {}, Bytes mask = {});
  void Sdr(uint32_t bits, Bytes tdi, Bytes tdo = {}, Bytes mask = {});

  // The same with don't-care bits, which the encoder may choose. `opcode`: kSir or kSdr.
  void Scan(Opcode opcode, const Shift &shift);

  // Sets the header (shifted before) or trailer (after) of later instruction or data shifts; `bits`
  // 0 removes it. Throws Error as PadBody() and AppendRecord() do.
  void Hir(uint32_t bits, Bytes data);
  void Tir(uint32_t bits, Bytes data);
  void Hdr(uint32_t bits, Bytes data);
  void Tdr(uint32_t bits, Bytes data);

  // Removes all four. The player keeps their lengths beyond the end of the file, where they would
  // displace the shifts of the next one: a file that sets them should end with this.
  void ClearPads();

  // Idle clocks for `cycles` periods of TCK, for `time` at the frequency in force, or for the sum
  // of both. See RunTestBody(). Throws Error for a negative time, for a number that does not fit,
  // and if the total at the highest frequency that can be in force, as far as it is known, is more
  // clocks than the player can count.
  void RunTest(uint64_t cycles, std::chrono::microseconds time = std::chrono::microseconds(0));
  void RunTest(std::chrono::microseconds time);

  // Limits TCK to `hz`: the player keeps the lowest frequency of all files since it was loaded. 0
  // makes it forget them all. Throws Error for 2^31 and above.
  void Frequency(uint32_t hz);

  // Sets TCK to `hz` regardless of earlier settings: a FREQUENCY of 0 and one of `hz`.
  void FreshFrequency(uint32_t hz);

  // Records between these two are played `count` times. Throws Error for a count of 0 (the player
  // would still play them once) or of 2^31 and above, for a loop within a loop (the player has a
  // single counter), and for an end without a beginning.
  void BeginLoop(uint32_t count);
  void EndLoop();

  // A record that the player skips. Throws Error unless `opcode` is 1, 5, 6 or 19.
  void Reserved(uint8_t opcode, Bytes body);

  // Any record, with only its length checked; the writer does not track its effect.
  void Record(uint8_t opcode, Bytes body);

  // Closes the file and returns what has not been taken yet. The player sees a failed comparison
  // only when the next record starts, so a harmless record ends the file: a run-test marked not to
  // run. The player skips it without driving a pin, and it does not affect the frequency, the
  // registers or the loop counter. Throws Error if a loop is open. Nothing can be written
  // afterwards.
  Buffer Finish();

  // The same without that record: a failed comparison in the last record goes unnoticed.
  Buffer FinishUnguarded();

  // Returns the output since the last Take() and releases it, for files too long to hold in memory.
  Buffer Take();

  // The length of the whole file so far in bytes, including what has been taken.
  uint64_t size() const;

  // The frequency that the player has after these records, as far as that is certain.
  const ClockRate &rate() const {
    return rate_;
  }

 private:
  void Put(uint8_t opcode, Bytes body);
  void PutRecord(uint8_t opcode);
  void CheckOpen() const;

  Sink sink_;       // none: records stay pending
  Buffer pending_;  // output not taken yet
  Buffer record_;   // being written: room for its front, then its body
  uint64_t taken_ = 0;
  Encoder encode_;  // none: blocks are plain
  bool plain_;
  ClockRate rate_;
  bool empty_ = true;  // no record yet
  bool in_loop_ = false;
  bool finished_ = false;
};

}  // namespace tvb
