# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# While a file waits for a minute, other processes have the processor in time.
# Runs on one processor.
load_all "$alone"
observer heartbeat >/tmp/gap &
observer=$!
sleep 0.2
completes heartbeat.tvb
kill $observer
wait $observer
gap=$(cat /tmp/gap)
elapsed=$(attribute elapsed_ms)
echo "the longest gap of a heartbeat of 10 ms: $gap ms; the download took $elapsed ms"
[ "$elapsed" -ge 60000 ] || fail "the download took $elapsed ms"
held 'a minute of waiting'
[ "$gap" -ge 10 ] && [ "$gap" -lt 50 ] || fail "the heartbeat had a gap of $gap ms"
held "a gap of $gap ms"
