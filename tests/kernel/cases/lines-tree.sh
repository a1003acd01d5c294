# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The framework takes the lines that the device tree names, as soon as their chip is there.
framework=$modules/cpldjtag.ko
driver=/sys/bus/platform/drivers/cpldjtag
places='tck=jtag_sim:0 tms=jtag_sim:1 tdi=jtag_sim:2 tdo=jtag_sim:3'
load_log
clear_kernel_log
refused 'a parameter beside the tree' insmod $framework lines=jtag_sim:0,1,2,3
equal 'what is told of it' \
  'cpldjtag: the device tree has the lines, so parameters must not give any' \
  "$(kernel_log | grep '^cpldjtag: ' | uniq)"

# serve: the device, which waits for its chip, is served a moment after that is there.
serve() {
  local tries=0
  load_sim "$alone"
  until [ -e $sysfs/download ]; do
    tries=$((tries + 1))
    [ $tries -lt 100 ] || fail 'the device is not served'
    sleep 0.1
  done
}

# works: the lines are those of the tree, and a download completes.
works() {
  equal 'the lines' "$places" "$(cat $sysfs/pins)"
  equal 'the lines that gpiolib knows' 'jtag-tck jtag-tms jtag-tdi jtag-tdo' \
    "$(grep -o 'jtag-t..' /sys/kernel/debug/gpio | xargs)"
  equal 'their levels' 'lines tck=0 tms=1 tdi=1 tdo=1' "$(sed -n 2p $sim/state)"
  load_driver
  completes alone.tvb
  rmmod m7_cpldjtag_drv
}

insmod $framework
refused 'finding an attribute before the chip' test -e $sysfs/download
serve
works
holds 1 "$text"
refused 'unloading the chip' rmmod jtag_sim

echo cpldjtag >$driver/unbind
refused 'finding an attribute of a device that is let go' test -e $sysfs/download
refused 'finding a line taken' grep -q jtag-t /sys/kernel/debug/gpio
echo cpldjtag >$driver/bind
equal 'the lines' "$places" "$(cat $sysfs/pins)"

load_driver
download long-uncompared.tvb >/tmp/cut &
wait_for running
echo cpldjtag >$driver/unbind
wait
equal 'a download whose device is let go' 'Operation canceled' "$(cat /tmp/cut)"
rmmod m7_cpldjtag_drv
echo cpldjtag >$driver/bind

rmmod cpldjtag
refused 'finding a line taken' grep -q jtag-t /sys/kernel/debug/gpio
rmmod jtag_sim
equal 'the chips left' '' "$(first_line)"
for base in 200 600; do
  insmod $modules/jtag_sim.ko "chain=$alone" base=$base
  equal 'the first number' $base "$(first_line)"
  insmod $framework
  works
  rmmod cpldjtag
  rmmod jtag_sim
done
