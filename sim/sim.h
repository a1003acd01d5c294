/* SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only */
/*
 * A simulated JTAG chain that acts on the levels of its pins alone, by the sixteen-state table of
 * IEEE 1149.1. The interface is C and needs no other header, so that it serves a kernel module and
 * host programs alike. Nothing here allocates: the caller provides the memory.
 *
 * Pins. TMS and TDI are sampled on the rising edge of TCK; TDO changes on the falling edge. TDO is
 * driven in Shift-IR and Shift-DR only and is pulled up (reads 1) elsewhere. There is no TRST. At
 * power-up TCK is low, TMS and TDI are pulled up, and the TAP is in Test-Logic-Reset.
 *
 * Order. Devices are numbered from 1 at the TDI end; the last one is nearest TDO. Bit 0 of a
 * register is nearest TDO: it leaves first and is shifted in first.
 */
#ifndef SIM_SIM_H
#define SIM_SIM_H

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char sim_u8;
typedef unsigned int sim_u32;
typedef unsigned long long sim_u64;
typedef __SIZE_TYPE__ sim_size;

/* clang-format off */
/*
 * The instructions of a device. The instruction register has 8 bits or as many as are
 * configured; a code of fewer has zeros in front. Capture-IR loads bits 1..0
 * with 01, bit 2 with "programming mode", bit 3 with "busy", bit 4 with "failed" and bits 7..5 with
 * 0 (in a device without a programmable part: 0x01).
 *
 *   instruction  register  captures     does
 *   BYPASS       1 bit     0            nothing; is all ones, a code as configured, and every
 *                                       instruction that the device does not know
 *   IDCODE       32 bits   the IDCODE   nothing; is 6 or as configured. Test-Logic-Reset
 *                                       selects it, or BYPASS in a device without an IDCODE
 *   ENABLE       1 bit     0            Update-IR enters programming mode; on entry the address,
 *                                       "done" and "failed" become 0
 *   DISABLE      1 bit     0            Update-IR leaves programming mode
 *   ERASE        1 bit     0            Update-IR begins to erase the whole memory
 *   ADDRESS      32 bits   the address  Update-DR sets the address
 *   PROGRAM      a row     0            Update-DR latches row and address, begins to program the
 *                                       row and adds 1 to the address
 *   READ         a row     the row at   Update-DR adds 1 to the address
 *                          the address
 *   STATUS       8 bits    sim_status   nothing
 *
 * From ENABLE on they are those of the programmable part, which has rows of configuration memory.
 * Outside programming mode all of them but ENABLE and STATUS have their registers, capture 0 and
 * do nothing.
 */
/* clang-format on */
enum sim_instruction {
  SIM_IDCODE_6 = 6,
  SIM_ENABLE = 0x10,
  SIM_DISABLE = 0x11,
  SIM_ERASE = 0x20,
  SIM_ADDRESS = 0x30,
  SIM_PROGRAM = 0x31,
  SIM_READ = 0x32,
  SIM_STATUS = 0x40,
  SIM_IDCODE_224 = 224,
  SIM_BYPASS = 0xff
};

/*
 * Erasing sets all bits. Programming makes 1 into 0 where the data is 0 and never 0 into 1; a row
 * that then differs from its data sets "failed". An address past the last row reads as ones and
 * fails to program.
 *
 * An erase or a program takes effect once the TAP has stayed in Run-Test/Idle for the configured
 * number of TCK after it began: rising edges that find the TAP in Run-Test/Idle and leave it there.
 * BYPASS, IDCODE and STATUS may be loaded meanwhile; the time in Run-Test/Idle adds up. Any other
 * instruction, a second PROGRAM row, or Test-Logic-Reset abandons it: the memory is not touched and
 * "failed" is set. Test-Logic-Reset also leaves programming mode; "failed" stays readable.
 */

/* Bits of the STATUS register; the others are 0. */
enum sim_status {
  SIM_STATUS_ENABLED = 1, /* programming mode */
  SIM_STATUS_BUSY = 2,
  SIM_STATUS_DONE = 4, /* the last operation took effect */
  SIM_STATUS_FAILED = 8
};

enum sim_line { SIM_TCK, SIM_TMS, SIM_TDI, SIM_TDO };

enum sim_state {
  SIM_TEST_LOGIC_RESET,
  SIM_RUN_TEST_IDLE,
  SIM_SELECT_DR_SCAN,
  SIM_CAPTURE_DR,
  SIM_SHIFT_DR,
  SIM_EXIT1_DR,
  SIM_PAUSE_DR,
  SIM_EXIT2_DR,
  SIM_UPDATE_DR,
  SIM_SELECT_IR_SCAN,
  SIM_CAPTURE_IR,
  SIM_SHIFT_IR,
  SIM_EXIT1_IR,
  SIM_PAUSE_IR,
  SIM_EXIT2_IR,
  SIM_UPDATE_IR,
  SIM_STATE_COUNT
};

/* One device. All zeros is a device with BYPASS alone. */
struct sim_device_config {
  sim_u32 idcode;             /* 0: the device has no IDCODE register */
  sim_u32 idcode_instruction; /* 0 is taken as 6 */
  sim_u32 rows;               /* rows of configuration memory; 0: no programmable part */
  sim_u32 row_bits;           /* bits in a row, at least 1 where there are rows */
  sim_u32 erase_clocks;       /* TCK in Run-Test/Idle that an erase needs; 0: none */
  sim_u32 program_clocks;     /* the same for a row */
  sim_u32 blank;              /* 1: the memory is erased at first (ones); 0: it holds zeros */
  sim_u32 ir_bits;            /* length of the instruction register, 2 to 32; 0 is taken as 8 */
  sim_u32 bypass_code;        /* an instruction that is BYPASS besides all ones; 0: none */
};

struct sim_config {
  const struct sim_device_config *devices; /* copied; devices[0] is device 1, at the TDI end */
  sim_u32 device_count;
  sim_size log_bytes; /* memory for the log of scans; 0: no log, every scan counts as dropped */
};

struct sim_chain;

/* Bytes of memory that a chain needs; 0 if the configuration is impossible (a length of an
 * instruction register that cannot be, what sim_instruction_fits(), sim_bypass_fits() or
 * sim_part_fits() refuse, rows of 0 bits, or a size past 2^30). */
sim_size sim_chain_size(const struct sim_config *config);

/* Makes a chain, powered up, in memory of sim_chain_size(config) bytes that is aligned to 8. The
 * memory stays the caller's and must outlive the chain; there is nothing to destroy. Returns null
 * if memory is null or the configuration is impossible. */
struct sim_chain *sim_chain_create(void *memory, const struct sim_config *config);

/* Turns the power off and on: TAP, instructions and part status as at first, pins as they were
 * driven; configuration memory, log and counters stay, and so do the faults but for a power that
 * was lost. */
void sim_chain_power_cycle(struct sim_chain *chain);

/* ---- pins */

/* Drives TCK, TMS or TDI to a level (0 low, anything else high). Only a change of level has an
 * effect; SIM_TDO is ignored. */
void sim_chain_write(struct sim_chain *chain, enum sim_line line, int level);

/* The same where no more comes of it than other levels and counts of changes: then returns 1, else
 * does nothing and returns 0. It is safe, as is sim_chain_read(), beside any other function of the
 * chain on another processor; a caller with a lock needs it for the rest only. */
int sim_chain_write_level(struct sim_chain *chain, enum sim_line line, int level);

/* The level of a line, 0 or 1: what was driven, or for SIM_TDO what the chain puts out. */
int sim_chain_read(const struct sim_chain *chain, enum sim_line line);

/* ---- state */

enum sim_state sim_chain_state(const struct sim_chain *chain);

/* The standard's name of a state ("Run-Test/Idle"); "?" for a number past the last. */
const char *sim_state_name(enum sim_state state);

sim_u32 sim_chain_device_count(const struct sim_chain *chain);

/* The configuration of a device (from 1), or null. */
const struct sim_device_config *sim_chain_device(const struct sim_chain *chain, sim_u32 device);

/* The instruction in force in a device (from 1): what Update-IR or Test-Logic-Reset left there.
 * 0xFF for a device that does not exist. */
sim_u32 sim_chain_instruction(const struct sim_chain *chain, sim_u32 device);

/* The STATUS register of a device (from 1); 0 where there is no programmable part. */
sim_u8 sim_chain_status(struct sim_chain *chain, sim_u32 device);

/* The memory of a row (rows from 0) of a device (from 1): (row_bits + 7) / 8 bytes, in which bit b
 * of the row (b = 0 shifted first) is bit b mod 8 of byte b div 8, least significant first. It may
 * be written. Null where there is no such row. */
sim_u8 *sim_chain_row(struct sim_chain *chain, sim_u32 device, sim_u32 row);

/* ---- counters, since the chain was made or they were cleared */

struct sim_counters {
  sim_u64 clocks[SIM_STATE_COUNT]; /* rising edges of TCK, by the state that they found */
  sim_u64 tms_changes;
  sim_u64 tdi_changes;
  sim_u64 ir_scans; /* passages through Capture-IR and Capture-DR */
  sim_u64 dr_scans;
};

const struct sim_counters *sim_chain_counters(const struct sim_chain *chain);
void sim_chain_clear_counters(struct sim_chain *chain);

/* ---- log of scans: each from its Capture to its Update, oldest first */

enum sim_scan_kind { SIM_SCAN_IR, SIM_SCAN_DR };

struct sim_scan {
  sim_u32 kind;        /* enum sim_scan_kind */
  sim_u32 number;      /* from 1 since the last clear; a gap is a dropped scan */
  sim_u32 bits;        /* rising edges in the Shift state, those after a pause included */
  sim_u64 idle_clocks; /* TCK that the TAP stayed in Run-Test/Idle between this scan and the next */
};

/* The first scan, and the one after; null at the end. A pointer is good until the log is cleared;
 * idle_clocks of the newest scan still grows. */
const struct sim_scan *sim_chain_first_scan(const struct sim_chain *chain);
const struct sim_scan *sim_chain_next_scan(const struct sim_chain *chain,
                                           const struct sim_scan *scan);

/* Bit number `bit` of a scan (0: the first shifted), as it stood on the pin at the rising edge,
 * faults included; 0 past the scan's end. */
int sim_scan_tdi(const struct sim_scan *scan, sim_u32 bit);
int sim_scan_tdo(const struct sim_scan *scan, sim_u32 bit);

/* Scans for which the log had no room. Such a scan is dropped whole; shorter ones after it may
 * still fit. */
sim_u64 sim_chain_dropped_scans(const struct sim_chain *chain);

/* Empties the log and its count of dropped scans. A scan under way is not logged. */
void sim_chain_clear_log(struct sim_chain *chain);

/* ---- faults */

enum sim_fault_kind {
  SIM_FAULT_TDO_STUCK_0, /* TDO reads 0 always */
  SIM_FAULT_TDO_STUCK_1, /* TDO reads 1 always */
  SIM_FAULT_FLIP,        /* bit `second` (from 0) of DR scan `first` leaves TDO inverted; scans are
                            counted from 1 at the next Capture-DR after the fault is set */
  SIM_FAULT_DEAD_ROW,    /* row `second` (from 0) of device `first` stays as it is when it is
                            programmed and does not set "failed"; an erase still clears it */
  SIM_FAULT_MISSING,     /* device `first` is not fitted and its place is bridged from TDI to TDO:
                            from the next Capture on the chain is shorter */
  SIM_FAULT_POWER_LOST,  /* rising edge `first` of TCK (from 1) after the fault is set finds the
                            chain  without power. The row that was being programmed, or all rows of a
                            part  that was being erased, hold garbage; the rest of the memory stays.
                            TDO is  pulled up, and edges do nothing, until the power is turned off
                            and  on  or the fault is cleared */
  SIM_FAULT_KIND_COUNT
};

struct sim_fault {
  enum sim_fault_kind kind;
  sim_u32 first;
  sim_u32 second;
};

/* Sets a fault beside those of other kinds; it replaces an earlier one of its own kind, and the two
 * stuck levels replace each other. Returns 0, or -1 and changes nothing if it names a device, row
 * or scan that cannot be. */
int sim_chain_set_fault(struct sim_chain *chain, const struct sim_fault *fault);
void sim_chain_clear_faults(struct sim_chain *chain);

/* Returns 1 and fills *fault if a fault of the kind is set, else returns 0. */
int sim_chain_fault(const struct sim_chain *chain, enum sim_fault_kind kind,
                    struct sim_fault *fault);

#ifdef __cplusplus
}
#endif

#endif
