# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# SWUpdate downloads the file that it carries, tells how far it is, and fails where the download does.

# update WHAT CODE: runs SWUpdate.
update() {
  exits "$1" "$2" swupdate -v -k /etc/swupdate/cert.pem -i /test/update.swu
}

boot_1() {
  swupdate-progress -w >/tmp/progress 2>&1 &
  update 'a good update' 0
  said SWUpdate /tmp/out 'SWUPDATE successful'
  equal 'the memory' "$good" "$(cat $sim/memory)"
  equal 'the state of the update' none "$(m7-cpld-update status)"
  # The first 100 is that of the copy.
  tr '\r' '\n' <"/tmp/progress" | sed -nE 's/.* 1 of 1 ([0-9]+)% \(update.tvb\).*/\1/p' >/tmp/percents
  xargs </tmp/percents
  seen=$(awk 'NR > 2 && $1 > last { n++ } { last = $1 } END { print n + 0 }' /tmp/percents)
  [ "$seen" -ge 8 ] || fail "the progress grew $seen times only"
  held "the progress grew $seen times"
  equal 'the last of it' 100 "$(tail -n 1 /tmp/percents)"

  set_faults dead-row=1:5
  update 'a failing update' 1
  said SWUpdate /tmp/out 'ERROR.*update.tvb: failed at clock 4,863 of 5,003$'
  said SWUpdate /tmp/out 'ERROR.*offset 0x1CA \(record 58\): the comparison failed in DR scan 25, bit 2: expected 0, read 1'
  said SWUpdate /tmp/out 'ERROR.*m7-cpld-update ended by exit 1'
  said SWUpdate /tmp/out 'SWUpdate \*failed\*'
  equal 'the state of the update' pending "$(m7-cpld-update status | head -n 1)"
  set_faults ''

  # A file that was damaged before the update was made and signed is not played.
  echo >$sim/counters
  exits 'an update with a damaged file' 1 swupdate -v -k /etc/swupdate/cert.pem -i /test/damaged.swu
  said SWUpdate /tmp/out 'update.tvb: offset 0x01: error: the file is damaged: its seal says CRC'
  said SWUpdate /tmp/out 'ERROR.*m7-cpld-update ended by exit 2'
  equal 'the clocks of a damaged file' 0 "$(clocks_seen)"
  equal 'the state of the update before it' pending "$(m7-cpld-update status | head -n 1)"

  exits 'an update signed by others' 1 swupdate -v -k /etc/swupdate/cert.pem -i /test/others.swu
  said SWUpdate /tmp/out 'ERROR.*Authentication of all signatures failed'
  equal 'the clocks of it' 0 "$(clocks_seen)"

  swupdate -k /etc/swupdate/cert.pem -i /test/update.swu &
  wait_for_clocks 500
  held 'the power is cut'
  cut_the_power
}

boot_2() {
  equal 'the state of the update' none "$(m7-cpld-update status)"
  equal 'the memory' "$good" "$(cat $sim/memory)"
}
