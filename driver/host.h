// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
//
// The whole driver for a program on the host that links libm7_cpldjtag_drv.a and supplies what
// kernel/kernel.h, kernel/framework.h and kernel/log.h declare.
#pragma once

#include <stdio.h>

// The module's byte reader has a name that the C library uses too; on the host it is m7_fgetc.
#define fgetc m7_fgetc
#include "player/reader.h"
#undef fgetc

#include "decode/block.h"
#include "decode/lzw_lib.h"
#include "engine/device.h"
#include "engine/padding.h"
#include "engine/playback.h"
#include "engine/run_flag.h"
#include "engine/shift.h"
#include "engine/vector.h"
#include "jtag_gpio.h"
#include "kernel/framework.h"
#include "kernel/kernel.h"
#include "kernel/log.h"
#include "module/download.h"
#include "module/module.h"
#include "player/interpreter.h"
#include "player/prescan.h"
#include "player/record.h"
#include "runtest/runtest.h"
#include "util/bit_string.h"
#include "util/memory.h"
#include "util/text.h"
