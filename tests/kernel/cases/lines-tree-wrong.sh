# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Each device of the tree that cannot be served is told of in one line, and takes nothing.
# Needs CONFIG_GPIO_PL061.
load_log
load_sim "$alone"
clear_kernel_log
insmod $modules/cpldjtag.ko

# told DEVICE TEXT: the framework's messages about that device, less that of the kernel itself; in it
# an error is a number, which some kernels name.
told() {
  equal "what is told of $1" "$2" "$(kernel_log | sed -n "s/^cpldjtag $1: //p" |
    sed 's/-EINVAL:/-22:/; s/-ENOENT:/-2:/; /^probe with driver/d')"
}
one_chain='only one chain can be served, and another device has that'
told inverted 'error -22: tms-gpios: active-low, but a JTAG line is not inverted; flag it as active-high'
told missing 'error -2: tms-gpios: the line is missing'
told twice 'tck-gpios and tdi-gpios are one line'
told disabled ''
told cpldjtag ''
told second "$one_chain"
# A chip that has the line may yet come; when it is looked for again, the chain is served.
tries=0
until kernel_log | grep -q "^cpldjtag outside: $one_chain" || [ $tries = 50 ]; do
  tries=$((tries + 1))
  sleep 0.1
done
told outside "tck-gpios: waiting for a chip that has the line
$one_chain"

equal 'the devices that are served' cpldjtag \
  "$(cd /sys/devices/platform && ls -d */download | sed 's,/download,,')"
equal 'the lines' 'tck=jtag_sim:0 tms=jtag_sim:1 tdi=jtag_sim:2 tdo=jtag_sim:3' \
  "$(cat $sysfs/pins)"
equal 'the lines that gpiolib knows' 'jtag-tck jtag-tms jtag-tdi jtag-tdo' \
  "$(grep -o 'jtag-t..' /sys/kernel/debug/gpio | xargs)"
load_driver
completes alone.tvb
