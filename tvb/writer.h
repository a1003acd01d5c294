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

// One file in the making. Every call puts whole records of exact length at its end; a call that
// throws Error puts none. Register data in arguments has the order told at Bytes: the first bit out
// is the most significant bit of the first byte.
//
// What the player keeps from one download to the next is the caller's concern, with help from here:
// the frequency (FreshFrequency) and the header and trailer registers (ClearPads).
class Writer {
 public:
  // Takes the records as they are written, one a call; the bytes are good during the call.
  using Sink = std::function<void(Bytes record)>;

  // Begins the file with `header`. If that says kPlainBlocks, blocks have no encoding to choose.
  // What is written is kept for Take() and Finish() to give.
  explicit Writer(const FileHeader &header = {});

  // The same with every record going to `sink` at once; it has got the header already, by
  // AppendHeader(). Nothing is left to take.
  Writer(const FileHeader &header, Sink sink);

  // How the data of later SIR and SDR records is encoded; a BlockEncoder's smallest block unless
  // said otherwise. Throws Error in a file of plain blocks, and for a choice as EncodeBlock().
  void Encode(const BlockChoice &choice);
  void Encode(Encoder encode);

  // The record that tells the player where the target sits: it looks for that in the first record
  // only, so this must be it (else Error). `before` devices lie between TDI and the target, `after`
  // between the target and TDO. It shifts all-ones (BYPASS) into each of them and `instruction`
  // into the target, every instruction register having 8 bits, and compares nothing. `instruction`:
  // its least significant bit goes out first. It should do no harm, as IDCODE; 0xE0 makes the
  // player read the IDCODE with that instruction from now on. 0xFF could not be told from BYPASS:
  // Error.
  void Opening(uint32_t before, uint32_t after, uint8_t instruction = kIdcode);

  // Shifts of the instruction or the data register: `bits` bits of `tdi`. TDO is compared with
  // `tdo` where `mask` has a 1; without a mask nothing is compared. An empty argument is absent.
  // Throws Error as ShiftBody() and AppendRecord() do.
  void Sir(uint32_t bits, Bytes tdi, Bytes tdo = {}, Bytes mask = {});
  void Sdr(uint32_t bits, Bytes tdi, Bytes tdo = {}, Bytes mask = {});

  // The same with bits that the encoder may choose. `opcode`: kSir or kSdr.
  void Scan(Opcode opcode, const Shift &shift);

  // The header (shifted before) and trailer (after) of later instruction or data shifts; none with
  // `bits` 0. Throws Error as PadBody() and AppendRecord() do.
  void Hir(uint32_t bits, Bytes data);
  void Tir(uint32_t bits, Bytes data);
  void Hdr(uint32_t bits, Bytes data);
  void Tdr(uint32_t bits, Bytes data);

  // Takes all four away. The player keeps their lengths beyond the end of the file, and they would
  // displace the shifts of the next one: a file that sets them should end with this.
  void ClearPads();

  // Idle clocks for `cycles` periods of TCK, for `time` at the frequency in force, or for the sum
  // of both. See RunTestBody(). Throws Error for a negative time, for a number that does not fit,
  // and where the clocks of all at the highest frequency that can be in force, as far as that is
  // known, are more than the player can count.
  void RunTest(uint64_t cycles, std::chrono::microseconds time = std::chrono::microseconds(0));
  void RunTest(std::chrono::microseconds time);

  // Limits TCK to `hz`: the player keeps the lowest frequency of all files since it was loaded. 0
  // makes it forget them all. Throws Error for 2^31 and more.
  void Frequency(uint32_t hz);

  // Sets TCK to `hz`, whatever was before: a FREQUENCY of 0 and one of `hz`.
  void FreshFrequency(uint32_t hz);

  // What is written between these two is played `count` times. Throws Error for a count of 0 (the
  // player would still play it once) or of 2^31 and more, for a loop within a loop (the player has
  // one counter), and for an end without a beginning.
  void BeginLoop(uint32_t count);
  void EndLoop();

  // A record that the player skips. `opcode` is 1, 5, 6 or 19, else Error.
  void Reserved(uint8_t opcode, Bytes body);

  // Any record at all, unchecked but for its length; what it means is not kept track of.
  void Record(uint8_t opcode, Bytes body);

  // Closes the file and gives what of it has not been taken yet. The player sees a failed
  // comparison when the next record starts, so a harmless record ends the file: a run-test that
  // says itself that it does not run. The player passes over it without driving a line, and it
  // leaves no trace in the frequency, the registers or the loop counter. Throws Error if a loop is
  // open. Nothing can be written afterwards.
  Buffer Finish();

  // The same without that record: a failed comparison in the last record goes unseen.
  Buffer FinishUnguarded();

  // Gives what has been written since the last Take(), and keeps it no longer: for files too long
  // to be held.
  Buffer Take();

  // The length of the whole file so far in bytes, what has been taken included.
  uint64_t size() const;

  // The frequency that the player is at after what is written, as far as that is certain.
  const ClockRate &rate() const {
    return rate_;
  }

 private:
  void Put(uint8_t opcode, Bytes body);
  void CheckOpen() const;

  Sink sink_;       // none: it stays pending
  Buffer pending_;  // what has not been taken yet
  uint64_t taken_ = 0;
  Encoder encode_;  // none: blocks are plain
  bool plain_;
  ClockRate rate_;
  bool empty_ = true;  // no record yet
  bool in_loop_ = false;
  bool finished_ = false;
};

}  // namespace tvb
