// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// Clocking in Run-Test/Idle and delays. Both hold the processor: nothing here sleeps.
#pragma once

#include "kernel/kernel.h"

extern "C" {

// The TCK frequency in Hz that run-tests keep to; 0 means unset. 0 at load, kept from one
// download to the next. Set by the interpreter's FREQUENCY records.
extern u64 g_freq;

// Stays in Run-Test/Idle for `cycles` TCK periods, and at least as long as they would take at
// g_freq, of which the low 32 bits count. The periods are clocked as fast as the lines allow; the
// time left over is waited as by Quorlan_Delay.
// TDI and TMS are low afterwards. An unset g_freq becomes 1 MHz and stays so. A negative count
// clocks nothing and waits for nothing; neither does a frequency whose low 32 bits are 0.
void Quorlan_KeepCycle(s32 cycles);

// Waits for `us` microseconds, in whole units of 100 and always one more than they hold.
void Quorlan_Delay(u64 us);
}
