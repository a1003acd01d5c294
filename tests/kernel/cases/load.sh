# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The four modules load, say who they are, and go again without a trace.
load_log
load_sim "$three"
load_framework
equal 'the list of drivers' '' "$(cat $sysfs/drivers)"
clear_log
clear_kernel_log
load_driver

untimed <$log | same_bytes 'the log of the load' "$begin$loaded$end"
equal 'the kernel log of the load' "log: [0/2] $begin
log: [0/2] $loaded
log: [0/2] $end" "$(kernel_log | grep '^log:' | untimed)"
equal 'the list of drivers' 'tvb_cpldjtag_drv 3127 3131 207' "$(cat $sysfs/drivers)"
equal "the driver's version" v6.2 "$(cat /sys/module/m7_cpldjtag_drv/version)"
equal 'the state' idle "$(cat $sysfs/state)"
equal 'the result' none "$(result)"
equal 'the TAP, before a download' 'tap Test-Logic-Reset' "$(head -n1 $sim/state)"

clear_log
rmmod m7_cpldjtag_drv
same_bytes 'the log of the unload' "$unloaded\r\n" <$log
equal 'the list of drivers' '' "$(cat $sysfs/drivers)"
rmmod cpldjtag
rmmod jtag_sim
rmmod log
refused 'finding the attributes' test -e $sysfs
refused 'finding the chain' test -e $sim
equal 'the chips left' '' "$(first_line)"
