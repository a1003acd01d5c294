# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A line that the device tree says is open-drain, of a chip that cannot do that itself: gpiolib drives
# it low, and lets it go for high.
# Needs CONFIG_GPIO_PL061.
# Needs CONFIG_FTRACE.
mkdir /tmp/tracing
mount -t tracefs tracefs /tmp/tracing
load_log
insmod $modules/cpldjtag.ko
load_driver
echo 1 >/tmp/tracing/events/gpio/gpio_direction/enable
fails alone.tvb
echo 0 >/tmp/tracing/events/gpio/gpio_direction/enable
sed -nE 's/.* gpio_direction: ([0-9]+ +(in|out)) .*/\1/p' /tmp/tracing/trace | sort -u >/run/turns
equal 'the lines that were turned' 1 "$(sed 's/ .*//' /run/turns | sort -u | wc -l)"
equal 'the ways they were turned' 'in out' "$(sed 's/.* //' /run/turns | sort | xargs)"
umount /tmp/tracing
