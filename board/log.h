/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/*
 * The board's log: what drivers write to it goes to the kernel log, line by line with module and
 * level, and byte for byte to <debugfs>/log/bytes.
 */
#ifndef BOARD_LOG_H
#define BOARD_LOG_H

#include <linux/compiler.h>
#include <linux/types.h>

/* Levels. Others are treated as LOG_LEVEL_INFO. */
#define LOG_LEVEL_ERROR 1
#define LOG_LEVEL_INFO 2

/*
 * Module 0 is for a driver's load and unload; each of its records is a line of its own. Records of
 * other modules are pieces, which are joined until one of them ends the line.
 */
#define LOG_MODULE_SYSTEM 0

/**
 * drv_log_record() - write one record
 * @module: who writes; a number that the drivers of a board agree on
 * @level: LOG_LEVEL_ERROR or LOG_LEVEL_INFO
 * @flag: part of the interface, ignored
 * @fmt: as for printk(), without a level prefix; "\r\n" and "\n" end a line
 *
 * A record is cut at 8191 bytes. May sleep.
 *
 * Return: the number of bytes written.
 */
__printf(4, 5) int drv_log_record(u32 module, u32 level, u32 flag, const char *fmt, ...);

/* log_get_timestamp_ms() - milliseconds of a clock that never goes back */
s64 log_get_timestamp_ms(void);

#endif
