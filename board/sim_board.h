/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/* What the files of jtag_sim.ko share. */
#ifndef BOARD_SIM_BOARD_H
#define BOARD_SIM_BOARD_H

#include <linux/spinlock.h>

#include "sim/sim.h"

/*
 * The one chain of this module, and the lock of whoever does more than read and change levels. A
 * pin may be used in any context, so the lock is held for a step of the chain at most; the longest
 * is an erase, which sets a part's whole memory.
 */
extern raw_spinlock_t sim_lock;
extern struct sim_chain *sim_chain;

/* ---- sim_main.c */

/*
 * Sets exactly the faults that @text names (see sim/config.h). Returns 0, or -EINVAL if the text is
 * wrong; then the faults stay as they were. Takes sim_lock.
 */
int sim_set_faults(const char *text);

/* ---- sim_chip.c */

/*
 * Offers the chain's pins as a GPIO chip "jtag_sim" of four lines, numbered from @base on or, if
 * that is negative, as gpiolib chooses. Lines 0 to 3 are TCK, TMS, TDI and TDO. Where the device
 * tree has a device "quorlan,jtag-sim" the chip is that device's. Returns 0 or a negative error
 * code.
 */
int sim_chip_add(int base);
void sim_chip_remove(void);

/* ---- sim_state.c */

/* The files in debugfs "jtag_sim". */
void sim_state_add(void);
void sim_state_remove(void);

#endif
