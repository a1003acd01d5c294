# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The framework finds its lines by the chip's label or by their names, whatever their numbers are.
framework=$modules/cpldjtag.ko
places='tck=jtag_sim:0 tms=jtag_sim:1 tdi=jtag_sim:2 tdo=jtag_sim:3'
load_log

# told WHAT TEXT: the one message of a load is TEXT. busybox tries a load that was refused a second
# time.
told() {
  equal "what is told of $1" "cpldjtag: $2" "$(kernel_log | grep '^cpldjtag: ' | uniq)"
}

# wrong WHAT LINES ERROR TEXT: these lines are refused with the error, a code, and the text.
wrong() {
  clear_kernel_log
  equal "$1" "$3" "$(insmod $framework "lines=$2" 2>&1 | sed 's/.*: //')"
  told "$1" "$4"
}
invalid='Invalid argument'
absent='No such device'
shape='not CHIP:N,N,N,N nor the names of four lines'

wrong 'lines before their chip' jtag_sim:0,1,2,3 "$absent" \
  'tck of lines=jtag_sim:0,1,2,3: there is no such chip or line: error -19'
load_sim "$alone"
wrong 'no chip of that label' jtag:0,1,2,3 "$absent" \
  'tck of lines=jtag:0,1,2,3: there is no such chip or line: error -19'
wrong 'no line of that name' sim-tck,sim-tms,tdi,sim-tdo "$absent" \
  'tdi of lines=sim-tck,sim-tms,tdi,sim-tdo: there is no such chip or line: error -19'
wrong 'an offset out of range' jtag_sim:0,1,2,4 "$invalid" \
  'tdo of lines=jtag_sim:0,1,2,4: the chip has no such line: error -22'
wrong 'driving the output of the chain' jtag_sim:0,3,2,1 'Operation not permitted' \
  'tms of lines=jtag_sim:0,3,2,1: the line cannot be an output: error -1'
wrong 'reading an input of the chain' sim-tck,sim-tms,sim-tdo,sim-tdi 'Operation not permitted' \
  'tdi of lines=sim-tck,sim-tms,sim-tdo,sim-tdi: the line cannot be an output: error -1'
wrong 'an offset for two signals' jtag_sim:0,1,0,3 "$invalid" \
  'lines=jtag_sim:0,1,0,3: two signals are on one line'
wrong 'a name for two signals' sim-tck,sim-tms,sim-tms,sim-tdo "$invalid" \
  'lines=sim-tck,sim-tms,sim-tms,sim-tdo: two signals are on one line'
for given in jtag_sim:0,1,2 jtag_sim:0,1,2,3,4 jtag_sim:0,1,2,x jtag_sim:0,1,2,65535 \
  jtag_sim:0,1,2,65536 jtag_sim:0,1,2,-3 :0,1,2,3 sim-tck,sim-tms,,sim-tdo jtag_sim; do
  wrong "$given" "$given" "$invalid" "lines=$given: $shape"
done
wrong 'nothing' '' "$invalid" "lines=: $shape"
clear_kernel_log
refused 'loading without lines' insmod $framework
told 'that' 'no lines: lines= is missing, and the device tree has no device for it'
clear_kernel_log
refused 'both ways at once' insmod $framework lines=jtag_sim:0,1,2,3 tck=0
told 'that' 'lines= and the numbers tck= tms= tdi= tdo= exclude each other'
base=$(first_line)
echo $((base + 2)) >/sys/class/gpio/export
wrong 'a line of another' jtag_sim:0,1,2,3 'Device or resource busy' \
  'tdi of lines=jtag_sim:0,1,2,3: the line is in use: error -16'
echo $((base + 2)) >/sys/class/gpio/unexport
refused 'finding a line taken' grep -q jtag- /sys/kernel/debug/gpio
rmmod jtag_sim

for base in 200 600 -1; do
  insmod $modules/jtag_sim.ko "chain=$alone" base=$base
  [ $base = -1 ] || equal 'the first number' $base "$(first_line)"
  for lines in jtag_sim:0,1,2,3 sim-tck,sim-tms,sim-tdi,sim-tdo; do
    insmod $framework lines=$lines
    equal "the lines of $lines" "$places" "$(cat $sysfs/pins)"
    equal 'the lines that gpiolib knows' 'jtag-tck jtag-tms jtag-tdi jtag-tdo' \
      "$(grep -o 'jtag-t..' /sys/kernel/debug/gpio | xargs)"
    equal 'their levels' 'lines tck=0 tms=1 tdi=1 tdo=1' "$(sed -n 2p $sim/state)"
    refused 'unloading the chip' rmmod jtag_sim
    load_driver
    completes alone.tvb
    holds 1 "$text"
    rmmod m7_cpldjtag_drv
    rmmod cpldjtag
    refused 'finding a line taken' grep -q jtag- /sys/kernel/debug/gpio
  done
  rmmod jtag_sim
done
