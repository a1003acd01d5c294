// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Command file images built byte by byte. The tests of the reader and the interpreter use this
// instead of the writer library, so that a mistake in the one cannot hide a mistake in the other.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace image {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kMark = '^';
constexpr uint8_t kTagTdi = 15, kTagTdo = 16, kTagMask = 17, kTagEnd = 23;
constexpr uint8_t kRunTest = 4, kFrequency = 7, kTdr = 9, kTir = 10, kHdr = 11, kHir = 12;
constexpr uint8_t kSdr = 13, kSir = 14, kReserved = 19, kLoop = '$', kEndLoop = '%';

// The compression byte that says: blocks are raw and carry no mode byte.
constexpr uint8_t kRaw = 0xF2;
// The size of the header that Header() makes: the index of the first record.
constexpr uint64_t kHeaderSize = 16;

// The given runs of bytes, one after the other.
inline Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes &part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

// A number: seven bits a byte, least significant group first, bit 7 on all bytes but the last.
inline Bytes Number(uint64_t value) {
  Bytes bytes;
  for (; value > 0x7F; value >>= 7) {
    bytes.push_back(static_cast<uint8_t>(0x80 | (value & 0x7F)));
  }
  bytes.push_back(static_cast<uint8_t>(value));
  return bytes;
}

// A negative 32-bit number in five groups.
inline Bytes Negative(int32_t value) {
  return Number(static_cast<uint32_t>(value));
}

// A header of 16 bytes with the given compression byte.
inline Bytes Header(uint8_t compress = kRaw) {
  return {'a', 0x31, 0x32, 1, 2, 3, 4, 5, 6, 7, 8, compress, 'b', 5, 'V', 1};
}

// A record with the given length field (in bits), opcode and body.
inline Bytes RecordOfLength(const Bytes &length, uint8_t opcode, const Bytes &body) {
  return Join({{kMark}, length, {opcode}, body});
}

// A record whose length field is exact.
inline Bytes Record(uint8_t opcode, const Bytes &body) {
  return RecordOfLength(Number(8 * (1 + body.size())), opcode, body);
}

// One field of a shift body: the tag and its data block as it stands in the file.
inline Bytes Field(uint8_t tag, const Bytes &block) {
  return Join({{tag}, block});
}

// The body of a shift record of `bits` bits; `fields` holds whole fields.
inline Bytes ShiftBody(uint64_t bits, const Bytes &fields) {
  return Join({Number(bits), fields, {kTagEnd}});
}

inline Bytes Shift(uint8_t opcode, uint64_t bits, const Bytes &fields) {
  return Record(opcode, ShiftBody(bits, fields));
}

// Shift records with TDI data alone, for files whose blocks are raw.
inline Bytes Sir(uint64_t bits, const Bytes &tdi) {
  return Shift(kSir, bits, Field(kTagTdi, tdi));
}

inline Bytes Sdr(uint64_t bits, const Bytes &tdi) {
  return Shift(kSdr, bits, Field(kTagTdi, tdi));
}

// The same with an expected value and a mask.
inline Bytes Sdr(uint64_t bits, const Bytes &tdi, const Bytes &tdo, const Bytes &mask) {
  return Shift(kSdr, bits, Join({Field(kTagTdi, tdi), Field(kTagTdo, tdo), Field(kTagMask, mask)}));
}

// The body of a header or trailer record: `data` holds the register's bytes, unused when bits is 0.
inline Bytes PadBody(uint64_t bits, const Bytes &data) {
  return bits == 0 ? Number(0) : Join({Number(bits), {kTagTdi}, data, {kTagEnd}});
}

inline Bytes Pad(uint8_t opcode, uint64_t bits, const Bytes &data = {}) {
  return Record(opcode, PadBody(bits, data));
}

inline Bytes Frequency(uint64_t hertz) {
  return Record(kFrequency, Number(hertz));
}

inline Bytes Loop(uint64_t count) {
  return Record(kLoop, Number(count));
}

inline Bytes EndLoop() {
  return Record(kEndLoop, {});
}

// A record that is passed over and does nothing.
inline Bytes Nothing() {
  return Record(kReserved, {});
}

// A RUNTEST record that takes effect, with the given fields and the end tag.
inline Bytes RunTest(const Bytes &fields) {
  return Record(kRunTest, Join({{1}, fields, {kTagEnd}}));
}

// Its fields, with the number as it stands in the file (the offsets are the caller's).
inline Bytes WaitField(uint64_t number) {
  return Join({{24}, Number(number)});
}

inline Bytes CycleField(uint64_t number) {
  return Join({{20}, Number(number)});
}

// A RUNTEST of `cycles` clocks, 0 to 32758.
inline Bytes RunCycles(uint64_t cycles) {
  return RunTest(CycleField(cycles + 10));
}

}  // namespace image
