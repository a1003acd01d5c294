// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "engine/device.h"

#include "engine/shift.h"
#include "kernel/log.h"
#include "util/bit_string.h"
#include "util/memory.h"

extern "C" {

#define IDCODE_BITS 32

u32 g_idcode_pub = 6;
u8 *g_chip_idcode;

void Quorlan_ExeSirCommand(u32 level, u32 total, u32 instruction) {
  u8 *bytes = m7_alloc_bytes(static_cast<u64>(total) + 1);
  if (!bytes)
    return;

  memset(bytes, 0xFF, total);
  bytes[total] = 0;
  // The first byte shifted ends up in the last device.
  const u32 index = total - level;
  if (index < total)
    bytes[index] = static_cast<u8>(Quorlan_ReverseChar(instruction));
  Quorlan_SvfShiftInsRegister(total * 8, bytes, nullptr, nullptr);
  kfree(bytes);
}

// What a read of a data register shifts: ceil(length / 8) bytes each, and a 0 byte.
struct readback {
  u8 *tdi;   // ones
  u8 *tdo;   // zeros; nothing is compared
  u8 *mask;  // one at each bit to read
};

static void free_readback(struct readback *buffers) {
  kfree(buffers->tdi);
  kfree(buffers->tdo);
  kfree(buffers->mask);
}

static bool alloc_readback(struct readback *buffers, u64 size) {
  buffers->tdi = m7_alloc_bytes(size + 1);
  buffers->tdo = m7_alloc_bytes(size + 1);
  buffers->mask = m7_alloc_bytes(size + 1);
  if (buffers->tdi && buffers->tdo && buffers->mask)
    return true;
  free_readback(buffers);
  return false;
}

static void fill_readback(struct readback *buffers, u64 size, u64 begin, u64 end) {
  memset(buffers->tdi, 0xFF, size);
  memset(buffers->tdo, 0, size);
  memset(buffers->mask, 0, size);
  buffers->tdi[size] = 0;
  buffers->tdo[size] = 0;
  buffers->mask[size] = 0;
  for (u64 k = begin; k < end && k < 8 * size; k++)
    buffers->mask[k / 8] |= 0x80 >> k % 8;
}

u8 *Quorlan_ExeSdrRdbkCommand(u32 level, u32 total, s32 bits) {
  // The bypassed devices between the target and TDO come out first.
  const u32 offset = total - level;
  const u32 length = offset + static_cast<u32>(bits);
  const u64 size = (static_cast<u64>(length) + 7) / 8;

  struct readback buffers;
  if (!alloc_readback(&buffers, size))
    return nullptr;

  const u64 end = bits > 0 ? static_cast<u64>(offset) + static_cast<u32>(bits) : offset;
  fill_readback(&buffers, size, offset, end);
  u8 *result =
      Quorlan_SvfShiftDataRegisterAndReadTDO(length, buffers.tdi, buffers.tdo, buffers.mask);
  free_readback(&buffers);
  return result;
}

static void log_idcode(const u8 *idcode) {
  u8 *bytes = Quorlan_BinToBytes(idcode, IDCODE_BITS, 0);
  if (!bytes)
    return;

  drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "DECODE CHIP : ");
  for (u32 i = 0; i < IDCODE_BITS / 8; i++)
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "%02x", bytes[i]);
  kfree(bytes);
}

void Quorlan_ReadIdCode(u32 level, u32 total) {
  Quorlan_ExeSirCommand(level, total, g_idcode_pub);
  g_chip_idcode = Quorlan_ExeSdrRdbkCommand(level, total, IDCODE_BITS);
  if (!g_chip_idcode) {
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0, "Error: Cannot Read CHIP IDCODE\r\n");
    return;
  }

  const s32 length = static_cast<s32>(strlen(reinterpret_cast<const char *>(g_chip_idcode)));
  if (length != IDCODE_BITS) {
    drv_log_record(LOG_MODULE_DOWNLOAD, LOG_INFO, 0,
                   "Error: CHIP IDCODE is invalid current size is %d\r\n", length);
    return;
  }
  log_idcode(g_chip_idcode);
}
}
