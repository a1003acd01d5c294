# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A download is cancelled, by the attribute or by a signal to its writer; the next one is whole.
load_all "$alone"
refused 'cancelling nothing' sh -c "echo 1 >$sysfs/cancel"

# ended FILE RESULT WHY: says so, and the next download is as good as ever.
ended() {
  equal "the result of $1" 0 "$(result)"
  equal "the error of $1" programming:user-abort "$(attribute error)"
  equal "the message of $1" "cpldjtag: $1: cancelled at clock $(attribute clocks)" \
    "$(kernel_log | grep ^cpldjtag)"
  clear_log
  completes alone.tvb
  holds 1 "$text"
  logs_good alone.tvb 0a014c35
}

now_ms() {
  awk '{ printf "%d", $1 * 1000 }' /proc/uptime
}

# cancelled FILE: it ends without another edge, `ms` after it was cancelled.
cancelled() {
  clear_kernel_log
  clear_log
  download $1 >/tmp/download &
  wait_for running
  sleep 0.3
  echo 1 >$sysfs/cancel
  begin=$(now_ms)
  edges=$(clocks_seen)
  wait
  ms=$(($(now_ms) - begin))
  equal "the download of $1" 'Operation canceled' "$(cat /tmp/download)"
  equal "the edges of $1 after that" "$edges" "$(clocks_seen)"
  ended $1
}

cancelled long-uncompared.tvb
cancelled slow.tvb
# At once where the file compares; the emulated machine may have been kept waiting itself.
tries=1
cancelled long-compared.tvb
until [ $ms -le 300 ] || [ $tries = 3 ]; do
  tries=$((tries + 1))
  cancelled long-compared.tvb
done
[ $ms -le 300 ] || fail "long-compared.tvb ended $ms ms after it was cancelled, three times"
held "the end after $ms ms"

for signal in TERM KILL; do
  clear_kernel_log
  clear_log
  sh -c "echo long-compared.tvb >$sysfs/download" &
  writer=$!
  wait_for running
  sleep 0.3
  kill -$signal $writer
  status=0
  wait $writer || status=$?
  equal "the writer's end by $signal" $((128 + $(kill -l $signal))) $status
  ended long-compared.tvb
done
