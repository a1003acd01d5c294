// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The TAP's operations, each built as a vector and played, and each ending in Run-Test/Idle: the
// reset, and scans, which are one shift of the instruction or the data register through the stored
// header and trailer, from Run-Test/Idle.
//
// A register of n bits travels as ceil(n / 8) bytes: bit d (d = 0 is shifted first) is bit
// 7 - d mod 8 of byte d div 8. So do `tdi`, `tdo` and `mask` below, each owned by the caller and
// at least that long. A length of padding that has outlived its vector moves the range that `mask`
// covers, by up to two bits past the register: give it a 0 byte more. `tdi` null shifts zeros;
// `tdo` null expects nothing (zeros); `mask` null reads nothing. A scan whose vector cannot be had
// is not played and stops the download.
#pragma once

#include "kernel/kernel.h"

// The kind of register for Quorlan_SvfShiftExit.
#define KIND_DATA 0
#define KIND_INSTRUCTION 1

extern "C" {

// Replaces the vector's buffer by a new one of g_vector_size bytes and plays a reset of the TAP:
// ten periods with TMS high, one with TMS low (IEEE 1149.1: five reach Test-Logic-Reset from any
// state). Returns 0.
s32 Quorlan_Reset(void);

// Shifts `bits` bits and compares TDO with `tdo` under `mask`; a difference stops the download.
void Quorlan_SvfShiftInsRegister(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask);
void Quorlan_SvfShiftDataRegister(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask);

// The same data shift, but returns the TDO bits under `mask` as a new bit string, last one read
// first, which the caller frees with kfree; null as for Quorlan_TransferAndReadTDO.
u8 *Quorlan_SvfShiftDataRegisterAndReadTDO(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask);

// Appends header, `bits` data bits and trailer to g_vector: those of instruction shifts for
// KIND_INSTRUCTION, of data shifts for any other kind. The last character of the data has TMS 1
// unless a trailer follows, whose last has. A count of 0 or less has no data characters.
void Quorlan_SvfShiftExit(s32 bits, const u8 *tdi, const u8 *tdo, s32 kind);
}
