# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Unloading the driver while it plays waits for the end of the download.
load_all "$alone"
download slow.tvb >/tmp/download &
wait_for running
(rmmod m7_cpldjtag_drv && echo gone >/tmp/unload) &
sleep 0.5
equal 'the state' running "$(cat $sysfs/state)"
refused 'seeing the unloading end' test -e /tmp/unload
refused 'unloading the framework' rmmod cpldjtag
equal 'another download' 'Device or resource busy' "$(download alone.tvb)"
wait
equal 'the download' ok "$(cat /tmp/download)"
equal 'the result' 1 "$(result)"
equal 'the unloading' gone "$(cat /tmp/unload)"
refused 'finding the driver' is_loaded m7_cpldjtag_drv
equal 'a download without a driver' 'No such device' "$(download alone.tvb)"
size=$(size_of slow.tvb)
same_bytes 'the log' "m7 cplddownload start file len $size\r\nDECODE CHIP : 0a014c35\
m7 process done file len $size\r\nm7 cplddownload end rtn_code 0\r\n$unloaded\r\n" <$log

load_driver
completes alone.tvb
