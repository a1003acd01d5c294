# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The chip of the lines is taken away while they are driven: that waits until the download has ended,
# which is cancelled, and the chain is served no more.
# Needs CONFIG_GPIO_PL061.
load_log
chip=$(grep -l pl061 /sys/class/gpio/gpiochip*/label | head -n1)
label=$(cat $chip)
gone=/sys/bus/amba/drivers/pl061_gpio
insmod $modules/cpldjtag.ko lines=$label:4,5,6,7
load_driver
clear_kernel_log
echo slow.tvb >$sysfs/download 2>/run/error &
wait_for running
sleep 0.3
echo "$label" >$gone/unbind
wait
equal 'what the download says' 'Operation canceled' "$(sed 's/.*: //' /run/error)"
equal 'the attributes' '' "$(ls $sysfs | grep -x download || true)"
equal 'the message' 'cpldjtag: slow.tvb: cancelled' \
  "$(kernel_log | sed -n 's/^\(cpldjtag: .* cancelled\) at clock .*/\1/p')"
refused 'finding the chip' grep -q pl061 /sys/class/gpio/gpiochip*/label
rmmod m7_cpldjtag_drv
rmmod cpldjtag

# It comes back, and so does all else.
echo "$label" >$gone/bind
insmod $modules/cpldjtag.ko lines=$label:4,5,6,7
equal 'the lines' "tck=$label:4 tms=$label:5 tdi=$label:6 tdo=$label:7" "$(cat $sysfs/pins)"
