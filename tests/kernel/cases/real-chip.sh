# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Lines of the machine's own chip, which never sleeps and has no chain: TDO is low.
# Needs CONFIG_GPIO_PL061.
load_log
label=$(cat /sys/class/gpio/gpiochip*/label | grep pl061)
insmod $modules/cpldjtag.ko lines=$label:4,5,6,7
load_driver
clear_log
clear_kernel_log
equal 'the lines' "tck=$label:4 tms=$label:5 tdi=$label:6 tdo=$label:7" "$(cat $sysfs/pins)"

# line NAME: its direction and level.
line() {
  sed -n "s/.*|jtag-$1 *) \(in\|out\) *\([a-z]*\).*/\1 \2/p" /sys/kernel/debug/gpio
}
equal 'TCK at rest' 'out lo' "$(line tck)"
equal 'TMS at rest' 'out hi' "$(line tms)"
fails alone.tvb
logs_unverified alone.tvb 00000000
equal 'the message' "cpldjtag: alone.tvb: failed at clock $(attribute clocks): TDO read 0" \
  "$(kernel_log | grep ^cpldjtag)"
equal 'TCK after that' 'out lo' "$(line tck)"
equal 'TMS in Shift-DR' 'out lo' "$(line tms)"
equal 'TDI after zeros' 'out lo' "$(line tdi)"
rmmod m7_cpldjtag_drv
rmmod cpldjtag
rmmod log
