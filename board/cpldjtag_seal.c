// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include <linux/crc32.h>
#include <linux/string.h>
#include <linux/types.h>

#include "cpldjtag_seal.h"

#define SEAL_AT 1
#define SEAL_END 11

static const char magic[] = {'S', 'E', 'A', 'L', 'E', 'D'};

u32 cpldjtag_image_crc(const u8 *image, size_t length)
{
	static const u8 zeros[SEAL_END - SEAL_AT];
	size_t end = length < SEAL_END ? length : SEAL_END;
	u32 crc = ~0u;

	if (length >= SEAL_AT) {
		crc = crc32_le(crc, image, SEAL_AT);
		crc = crc32_le(crc, zeros, end - SEAL_AT);
		crc = crc32_le(crc, image + end, length - end);
	}
	return ~crc;
}

enum cpldjtag_seal cpldjtag_image_seal(const u8 *image, size_t length, u32 crc)
{
	const u8 *stored;

	if (length < SEAL_AT + sizeof(magic) || memcmp(image + SEAL_AT, magic, sizeof(magic)) != 0)
		return CPLDJTAG_UNSEALED;
	if (length < SEAL_END)
		return CPLDJTAG_SEAL_BROKEN;
	stored = image + SEAL_AT + sizeof(magic);
	if ((stored[0] | stored[1] << 8 | stored[2] << 16 | (u32)stored[3] << 24) != crc)
		return CPLDJTAG_SEAL_BROKEN;
	return CPLDJTAG_SEALED;
}
