# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The framework takes exactly the lines that it is told, or none.
load_log
load_sim "$alone"
base=$(first_line)
framework=$modules/cpldjtag.ko
refused 'a line that is not given' insmod $framework tck=$base tms=$((base + 1)) tdi=$((base + 2))
refused 'a number that cannot be' \
  insmod $framework tck=$base tms=$((base + 1)) tdi=$((base + 2)) tdo=99999
refused 'a line that nobody has' \
  insmod $framework tck=$base tms=$((base + 1)) tdi=$((base + 2)) tdo=0
refused 'a line for two signals' \
  insmod $framework tck=$base tms=$((base + 1)) tdi=$base tdo=$((base + 3))
refused 'driving the output of the chain' \
  insmod $framework tck=$((base + 3)) tms=$((base + 1)) tdi=$((base + 2)) tdo=$base
refused 'finding a line taken' grep -q jtag- /sys/kernel/debug/gpio

load_framework
equal 'the lines' "tck=$base tms=$((base + 1)) tdi=$((base + 2)) tdo=$((base + 3))" \
  "$(cat $sysfs/pins)"
equal 'the lines that gpiolib knows' 'jtag-tck jtag-tms jtag-tdi jtag-tdo' \
  "$(grep -o 'jtag-t..' /sys/kernel/debug/gpio | xargs)"
equal 'their levels' 'lines tck=0 tms=1 tdi=1 tdo=1' "$(sed -n 2p $sim/state)"
refused 'taking a line twice' sh -c "echo $base >/sys/class/gpio/export"
load_driver
completes alone.tvb
rmmod m7_cpldjtag_drv
rmmod cpldjtag
refused 'finding a line taken' grep -q jtag- /sys/kernel/debug/gpio
rmmod jtag_sim
