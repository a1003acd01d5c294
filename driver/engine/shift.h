// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// What is done to the TAP: the reset, and scans. Each is built as a vector, played, and ends in
// Run-Test/Idle. A scan starts there and shifts the instruction or the data register once, through
// the stored header and trailer.
//
// `tdi`, `tdo` and `mask` are registers in the order of util/bit_string.h, owned by the caller. A
// padding length that has outlived its vector moves the range that `mask` covers by up to two bits
// past the register: give `mask` another byte of 0. Null `tdi` shifts zeros, null `tdo` expects
// zeros, null `mask` reads nothing. A scan whose vector cannot be allocated is not played and stops
// the download.
#pragma once

#include "kernel/kernel.h"

// The kind of register for Quorlan_SvfShiftExit.
#define KIND_DATA 0
#define KIND_INSTRUCTION 1

extern "C" {

// Resets the TAP with a vector in a new buffer of g_vector_size bytes: ten periods with TMS high,
// one with TMS low (IEEE 1149.1: five reach Test-Logic-Reset from any state). Returns 0.
s32 Quorlan_Reset(void);

// Shifts `bits` bits and compares TDO with `tdo` under `mask`; a difference stops the download.
void Quorlan_SvfShiftInsRegister(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask);
void Quorlan_SvfShiftDataRegister(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask);

// The same data shift, but returns the TDO bits under `mask` as a new bit string, last one read
// first, which the caller frees with kfree; null as for Quorlan_TransferAndReadTDO.
u8 *Quorlan_SvfShiftDataRegisterAndReadTDO(u32 bits, const u8 *tdi, const u8 *tdo, const u8 *mask);

// Appends header, `bits` data bits and trailer to g_vector: those of instruction shifts for
// KIND_INSTRUCTION, of data shifts for any other kind. The last character of the data has TMS 1
// unless a trailer follows, whose last has it. A count of 0 or less has no data characters.
void Quorlan_SvfShiftExit(s32 bits, const u8 *tdi, const u8 *tdo, s32 kind);
}
