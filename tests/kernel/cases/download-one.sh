# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A part that is alone in its chain is identified, erased, programmed and verified.
load_all "$alone"
holds 1 "$zero"
clear_kernel_log
completes alone.tvb
holds 1 "$text"
logs_good alone.tvb 0a014c35
size=$(size_of alone.tvb)
equal 'the kernel log of the download' "log: [43/2] m7 cplddownload start file len $size
log: [43/2] DECODE CHIP : 0a014c35m7 process done file len $size
log: [43/2] m7 cplddownload end rtn_code 0" "$(kernel_log | grep '^log:')"
equal 'the TAP after it' 'tap Run-Test/Idle' "$(head -n1 $sim/state)"
equal 'the state' idle "$(cat $sysfs/state)"
