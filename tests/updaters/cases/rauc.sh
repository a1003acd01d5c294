# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# RAUC downloads the file of its bundle, and fails where the download does.

# journal: what the service has said since the last time.
journal() {
  journalctl -u rauc.service -o cat --cursor-file=/tmp/cursor >/tmp/journal
  cat /tmp/journal
}

boot_1() {
  exits 'a good bundle' 0 rauc install /test/update.raucb
  said RAUC /tmp/out '^Installing .* succeeded'
  equal 'the memory' "$good" "$(cat $sim/memory)"
  equal 'the state of the update' none "$(m7-cpld-update status)"
  journal
  said 'the journal' /tmp/journal '^update.tvb: 5[0-9] %, [0-9,]+ of 5,003 clocks after'
  said 'the journal' /tmp/journal '^update.tvb: done, 5,003 clocks in'

  echo >$sim/counters
  exits 'a bundle signed by others' 1 rauc install /test/others.raucb
  said RAUC /tmp/out 'signature verification failed'
  equal 'the clocks of it' 0 "$(clocks_seen)"

  set_faults dead-row=1:5
  exits 'a bundle for a chip with a fault' 1 rauc install /test/update.raucb
  said RAUC /tmp/out 'LastError: Installation error:'
  equal 'the state of the update' pending "$(m7-cpld-update status | head -n 1)"
  journal
  said 'the journal' /tmp/journal 'update.tvb: offset 0x1CA \(record 58\): error: the comparison failed in DR scan 25, bit 2: expected 0, read 1'
  set_faults ''

  exits forget 0 m7-cpld-update forget
  modprobe -r m7_cpldjtag_drv
  modprobe -r cpldjtag
  exits 'a bundle for a board without the framework' 1 rauc install /test/update.raucb
  said RAUC /tmp/out "Destination device '/sys/devices/platform/cpldjtag' not found"
  modprobe m7_cpldjtag_drv

  rauc install /test/update.raucb &
  wait_for_clocks 500
  held 'the power is cut'
  cut_the_power
}

boot_2() {
  equal 'the state of the update' none "$(m7-cpld-update status)"
  equal 'the memory' "$good" "$(cat $sim/memory)"
}
