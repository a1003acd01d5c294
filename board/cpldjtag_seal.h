/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/*
 * The seal of a command file: bytes 1 to 10 of its header, which the player ignores. Bytes 1 to 6
 * say that there is one; bytes 7 to 10 are the CRC-32 of the whole file, least significant byte
 * first, made with all ten as zero.
 */
#ifndef BOARD_CPLDJTAG_SEAL_H
#define BOARD_CPLDJTAG_SEAL_H

#include <linux/types.h>

enum cpldjtag_seal { CPLDJTAG_UNSEALED, CPLDJTAG_SEALED, CPLDJTAG_SEAL_BROKEN };

/* The CRC that a seal of this file should have. */
u32 cpldjtag_image_crc(const u8 *image, size_t length);

/* What the file's seal says; @crc is the above. A file that ends inside its seal has a broken one.
 */
enum cpldjtag_seal cpldjtag_image_seal(const u8 *image, size_t length, u32 crc);

#endif
