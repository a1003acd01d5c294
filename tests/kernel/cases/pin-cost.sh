# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# What a clock costs through driver and framework, in instructions, has not become more than 3 % dearer
# than is on record here. The compiler is the one that the distribution has for the kernel's machine.
# Runs on one processor, of 2^0 ns an instruction.
# Files of 65536 clocks.

# costs WHAT TENTHS INSTRUCTIONS: for the last download's clocks, a tenth of an instruction each.
costs() {
  local found=$(($3 * 10 / $(attribute clocks)))
  echo "$1: $found tenths of an instruction a clock, on record are $2"
  [ $((found * 100)) -le $(($2 * 103)) ] || fail "$1 costs $found tenths of an instruction, not $2"
  held "$1"
}

# download_costs FILE TENTHS [HOW]
download_costs() {
  local ns
  ns=$(ns_of $1.tvb)
  costs "the download of $1${3:+ $3}" $2 $ns
}

# framework_costs FILE TENTHS: the calls of the driver, all of them driven, from a loop. The driver goes.
framework_costs() {
  echo 0 >/sys/module/cpldjtag/parameters/skip_same_level
  echo 1 >/sys/module/null_chip/parameters/record
  completes $1.tvb
  echo 0 >/sys/module/null_chip/parameters/record
  rmmod m7_cpldjtag_drv
  insmod $modules/replay.ko
  completes $1.tvb
  costs "the framework's part of $1" $2 $(cat /sys/module/replay/parameters/ns)
  rmmod replay
}

load_log
load_null_chip
load_driver
download_costs long 1184
download_costs compared 1802
download_costs bits64 1388
download_costs bits8 2282
download_costs runtest 736
framework_costs compared 2001
unload_null_chip

load_null_chip device=0
load_driver
download_costs long 2553 'through gpiolib'
