# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Nobody waits for the download of an image that was written to the kernel; yet it can be cancelled from
# its first moment on, the board is not suspended meanwhile, and the kernel has no complaint.
load_all "$alone"
class=/sys/class/firmware/cpldjtag
[ -e $class ] || class=$sysfs

# upload FILE
upload() {
  echo 1 >$class/loading
  cat "$1" >$class/data
  echo 0 >$class/loading
}

# until_not STATUS...: until "status" is none of these.
until_not() {
  local tries=0
  while echo "$@" | grep -qw "$(cat $class/status)"; do
    tries=$((tries + 1))
    [ $tries -lt 100 ] || fail "the status is still $(cat $class/status)"
    sleep 0.1
  done
}

# Cancelled before the kernel has as much as seen the image.
attempt=0
while [ $attempt -lt 30 ]; do
  upload $firmware/long-compared.tvb
  echo 1 >$class/cancel
  until_not receiving preparing transferring programming
  attempt=$((attempt + 1))
done
held "$attempt cancels at once"

# The kernel has much to copy before the driver is called.
{ cat $firmware/long-compared.tvb; head -c 25000000 /dev/zero; } >/tmp/large
for attempt in 1 2 3 4 5; do
  upload /tmp/large
  echo 1 >$class/cancel
  until_not receiving preparing transferring programming
  equal "the error, cancelled at once ($attempt)" user-abort "$(attribute error | cut -d: -f2)"
done
rm /tmp/large

clear_kernel_log
[ ! -e /proc/sys/kernel/hung_task_timeout_secs ] || echo 2 >/proc/sys/kernel/hung_task_timeout_secs
upload $firmware/long-compared.tvb
wait_for running
sleep 6
equal 'what the kernel says of a long download' '' "$(kernel_log | grep -E 'workqueue|blocked for')"
if grep -q freeze /sys/power/state; then
  echo 1000 >/sys/power/pm_freeze_timeout
  refused 'a suspend meanwhile' sh -c 'echo freeze >/sys/power/state'
fi
equal 'the state after that' running "$(attribute state)"
echo 1 >$class/cancel
until_not receiving preparing transferring programming
equal 'the error' programming:user-abort "$(attribute error)"
completes alone.tvb
unload_all
