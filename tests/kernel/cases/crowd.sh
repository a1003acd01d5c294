# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Four writers who do not wait for each other, and a reader of everything: each download is either
# completed or refused, and what is read is always one of the known texts.
load_all "$three"

# writer FILE: fifteen downloads, their answers to FILE.
writer() {
  local count=0
  while [ $count -lt 15 ]; do
    download idcode.tvb
    count=$((count + 1))
  done >$1
}
reader() {
  while [ ! -e /tmp/done ]; do
    cat $sysfs/state $sysfs/result $sysfs/drivers
    cat $sim/state $sim/scans $sim/counters $log >/dev/null
  done >/tmp/read
}

reader &
writers=
for number in 1 2 3 4; do
  writer /tmp/answers$number &
  writers="$writers $!"
done
wait $writers
: >/tmp/done
wait
equal 'the number of answers' 60 "$(cat /tmp/answers? | wc -l)"
equal 'other answers' '' "$(cat /tmp/answers? | grep -vx -e ok -e 'Device or resource busy' || true)"
good=$(cat /tmp/answers? | grep -cx ok)
equal 'other texts' '' "$(grep -vx -e idle -e loading -e running -e 1 -e none \
  -e 'tvb_cpldjtag_drv 3127 3131 207' /tmp/read || true)"
equal 'the ends in the log' "$good" "$(grep -c 'end rtn_code 0' $log)"
clear_log
completes idcode.tvb
logs_good idcode.tvb 0a014c35
