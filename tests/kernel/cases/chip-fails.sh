# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The lines are taken while the driver of their chip's device still probes; then that fails, which takes
# the chip away and waits for nobody. gpiolib keeps the lines still, and nothing else comes of it.
# Files of 2048 clocks.
load_log
insmod $modules/null_chip.ko probing=1 2>/run/chip &
tries=0
until grep -qsx null_chip /sys/class/gpio/gpiochip*/label; do
  tries=$((tries + 1))
  [ $tries -lt 100 ] || fail 'there is no chip'
  sleep 0.1
done
insmod $modules/cpldjtag.ko lines=null_chip:0,1,2,3
load_driver

# complaints: what gpiolib says of a download.
complaints() {
  clear_kernel_log
  echo long.tvb >$sysfs/download 2>/dev/null || true
  kernel_log | grep -o 'gpiod_set_raw_value: .*' | sort -u
}
equal 'what gpiolib says of the chip' '' "$(complaints)"
# insmod tries a second time.
while [ ! -s /run/chip ]; do
  echo 0 2>/dev/null >/sys/module/null_chip/parameters/probing || true
  sleep 0.1
done
wait
equal 'what the chip says' 'No such device' "$(sed 's/.*: //' /run/chip)"
# It says so at each call, which is too much for a console.
level=$(cut -f1 /proc/sys/kernel/printk)
echo 2 >/proc/sys/kernel/printk
equal 'what gpiolib says now' 'gpiod_set_raw_value: backing chip is gone' "$(complaints)"
echo "$level" >/proc/sys/kernel/printk
rmmod m7_cpldjtag_drv
rmmod cpldjtag
