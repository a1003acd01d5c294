# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A second download is refused while the first one runs, and does it no harm.
load_all "$alone"
download slow.tvb >/tmp/first &
wait_for running
equal 'the second download' 'Device or resource busy' "$(download alone.tvb)"
equal 'the state' running "$(cat $sysfs/state)"
equal 'the result' none "$(result)"
wait
equal 'the first download' ok "$(cat /tmp/first)"
equal 'the result' 1 "$(result)"
logs_good slow.tvb 0a014c35
completes alone.tvb
