# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# What a clock costs, in instructions: of our downloads, of the same calls made in other ways, and of
# OpenOCD. Each is a line "FIGURE FILE WAY CLOCKS INSTRUCTIONS" on the console; tests/bench/kernel reads
# them and says what the ways are.
# Runs on one processor, of 2^0 ns an instruction.
# Files of 131072 clocks.

# figure FILE WAY INSTRUCTIONS: for as many clocks as the driver's download has.
figure() {
  [ -n "$3" ] || fail "$1, $2 was not measured"
  echo "FIGURE $1 $2 $clocks $3"
  held "$1, $2"
}

# record FILE: what the driver asks of the chip, and in how
# many clocks.
record() {
  echo 0 >/sys/module/cpldjtag/parameters/skip_same_level
  echo 1 >/sys/module/null_chip/parameters/record
  completes "$1.tvb"
  echo 0 >/sys/module/null_chip/parameters/record
  echo 1 >/sys/module/cpldjtag/parameters/skip_same_level
  clocks=$(attribute clocks)
}

# measure_download FILE WAY
measure_download() {
  local ns
  ns=$(ns_of $1.tvb)
  clocks=$(attribute clocks)
  figure $1 $2 "$ns"
}

# replay FILE WAY CHANGES_ONLY: prints how long replay.ko takes.
replay() {
  echo $2 >/sys/module/replay/parameters/way
  echo $3 >/sys/module/replay/parameters/changes_only
  completes $1.tvb >&2
  cat /sys/module/replay/parameters/ns
}

measure_replays() {
  local way
  insmod $modules/replay.ko
  for way in framework nothing gpiolib chip; do
    figure $1 $way "$(replay $1 $way 0)"
  done
  figure $1 gpiolib-changes "$(replay $1 gpiolib 1)"
  rmmod replay
}

# No option has it wait; it looks neither for the chain nor for anybody to serve.
measure_openocd() {
  /usr/bin/openocd -d0 -c 'adapter driver linuxgpiod' \
    -c 'adapter gpio tck 0 -chip 0; adapter gpio tms 1 -chip 0' \
    -c 'adapter gpio tdi 2 -chip 0; adapter gpio tdo 3 -chip 0' \
    -c 'transport select jtag; jtag newtap chain tap -irlen 8' \
    -c 'gdb_port disabled; tcl_port disabled; telnet_port disabled' \
    -c 'proc jtag_init {} {}' -c init -c 'set began [ms]' -c "svf -quiet /test/pins/$1.svf" \
    -c 'echo "took [expr {[ms] - $began}]"' -c shutdown >/tmp/openocd 2>&1 || true
  cat /tmp/openocd
  figure $1 openocd $(($(sed -n 's/^took //p' /tmp/openocd) * 1000000))
}

load_log
for file in long compared bits64 bits8 runtest; do
  load_null_chip
  load_driver
  record $file
  measure_download $file download
  rmmod m7_cpldjtag_drv
  measure_replays $file
  rmmod cpldjtag
  measure_openocd $file
  rmmod null_chip
done

for file in long compared bits64 bits8 runtest; do
  load_null_chip device=0
  load_driver
  measure_download $file download-gpiolib
  rmmod m7_cpldjtag_drv
  unload_null_chip
done

load_sim "$alone"
load_framework
load_driver
for file in long echoed bits64 bits8 runtest; do
  measure_download $file jtag_sim
done
