# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# An event tells of the end of each download.
# Needs CONFIG_NET.
load_all "$alone"
uevent sh -c 'echo "$ACTION $DEVPATH $CPLDJTAG_FILE $CPLDJTAG_RESULT $CPLDJTAG_ERROR"' >/tmp/events &
listener=$!
sleep 0.5

completes alone.tvb
fails wrong-idcode.tvb
equal 'a missing file' 'No such file or directory' "$(download missing.tvb)"
sleep 0.5
kill $listener

equal 'the events' 'change /devices/platform/cpldjtag alone.tvb 1 none
change /devices/platform/cpldjtag wrong-idcode.tvb 0 programming:hw-error
change /devices/platform/cpldjtag missing.tvb none preparing:read-write-error' \
  "$(grep '^change /devices/platform/cpldjtag' /tmp/events)"
