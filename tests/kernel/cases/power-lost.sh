# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The chain loses its power at a hundred places of a download; the same file again makes the part good.
load_all "$three"
echo >$sim/counters
completes three.tvb
clocks=$(clocks_seen)
good=$(cat $sim/memory)
place=0
failed=0
while [ $place -lt 100 ]; do
  clock=$((1 + place * (clocks - 1) / 99))
  echo "power-lost=$clock" >$sim/faults
  [ "$(download three.tvb)" = ok ] || failed=$((failed + 1))
  echo 1 >$sim/power
  [ "$(download three.tvb)" = ok ] && [ "$(cat $sim/memory)" = "$good" ] ||
    fail "the download after a loss at clock $clock is not good"
  place=$((place + 1))
done
[ $failed -ge 90 ] || fail "only $failed downloads failed"
held "$failed of 100 downloads failed, and were made good, over $clocks clocks"
