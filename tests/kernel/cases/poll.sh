# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Who polls the state is told of each change.
load_all "$alone"
observer changes $sysfs/state >/tmp/changes &
observer=$!
sleep 0.5
equal 'the state, before' idle "$(cat /tmp/changes)"
completes slow.tvb
sleep 0.5
# Loading is too short to be seen each time.
equal 'the changes' 'idle
running
idle' "$(grep -vx loading /tmp/changes | uniq)"
kill $observer
