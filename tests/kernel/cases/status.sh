# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# What the attributes say before, in and after a download, and of one that is not played.
load_all "$alone"
equal 'the error, before' none "$(attribute error)"
equal 'the file, before' '' "$(attribute file)"
equal 'the CRC, before' none "$(attribute crc)"
equal 'the clocks, before' 0 "$(attribute clocks)"
equal 'the last read, before' none "$(attribute last_read)"

echo >$sim/counters
clear_kernel_log
completes alone.tvb
equal 'the error' none "$(attribute error)"
equal 'the file' alone.tvb "$(attribute file)"
clocks=$(attribute clocks)
equal 'the clocks' "$(clocks_seen)" "$clocks"
equal 'the message' "cpldjtag: alone.tvb: completed, $clocks clocks in MS ms" \
  "$(kernel_log | grep ^cpldjtag | sed 's/in [0-9]* ms/in MS ms/')"

clear_kernel_log
echo 12345 >$sysfs/total_clocks
fails wrong-idcode.tvb
equal 'the error' programming:hw-error "$(attribute error)"
read -r clock level <$sysfs/last_read
equal 'the clock of the last read' "$(attribute clocks)" "$clock"
equal 'the message' "cpldjtag: wrong-idcode.tvb: failed at clock $clock of 12345: TDO read $level" \
  "$(kernel_log | grep ^cpldjtag)"
equal 'the total, after it' 0 "$(attribute total_clocks)"

clear_kernel_log
fails unknown-opcode.tvb
equal 'the message' "cpldjtag: unknown-opcode.tvb: failed at clock $(attribute clocks): not by a \
comparison, see the driver's messages" "$(kernel_log | grep ^cpldjtag)"

clear_kernel_log
equal 'a missing file' 'No such file or directory' "$(download missing.tvb)"
equal 'the error' preparing:read-write-error "$(attribute error)"
equal 'the result' none "$(result)"
equal 'the file' missing.tvb "$(attribute file)"
equal 'the message' 'cpldjtag: missing.tvb: not played: error -2' "$(kernel_log | grep ^cpldjtag)"

# While one runs, result and error are those of the one before it.
completes alone.tvb
download slow.tvb >/tmp/slow &
wait_for running
equal 'the file' slow.tvb "$(attribute file)"
equal 'the result' 1 "$(result)"
first=$(attribute elapsed_ms)
sleep 0.5
second=$(attribute elapsed_ms)
[ $((second - first)) -ge 400 ] || fail "from $first to $second ms in half a second"
held 'the time that has passed'
wait
equal 'the download' ok "$(cat /tmp/slow)"
elapsed=$(attribute elapsed_ms)
[ "$elapsed" -ge 2000 ] || fail "the download took $elapsed ms"
sleep 0.2
equal 'the time that it took' "$elapsed" "$(attribute elapsed_ms)"
