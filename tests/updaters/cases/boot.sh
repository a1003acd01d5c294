# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# An update is finished by the boots after it was interrupted, but not tried for ever.

# is_state WORD TRIES
is_state() {
  m7-cpld-update status >/tmp/status
  cat /tmp/status
  equal 'the state of the update' "$1" "$(head -n 1 /tmp/status)"
  [ $# = 1 ] || equal 'its tries' "tries $2" "$(sed -n 2p /tmp/status)"
}

# unit_is WORD: how the service ended at this boot.
unit_is() {
  equal 'the service' "$1" "$(systemctl show -P ActiveState m7-cpld-update.service)"
}

# The faults that the chain has at the next boots.
keep_faults() {
  sed -i '/faults=/d' /etc/modprobe.d/cpldjtag.conf
  [ -z "$1" ] || echo "options jtag_sim faults=$1" >>/etc/modprobe.d/cpldjtag.conf
}

boot_1() {
  is_state none
  equal 'whether the service was needed' no "$(systemctl show -P ConditionResult m7-cpld-update.service)"
  cp /test/update.tvb /run/update.tvb
  m7-cpld-update begin /run/update.tvb &
  wait_for_clocks 500
  is_state pending 1
  said 'the marker' /tmp/status "^file [0-9A-F]{8} update.tvb\$"
  held 'the power is cut'
  cut_the_power
}

# The file came from /run, which a boot empties.
boot_2() {
  equal 'the file' gone "$([ -e /run/update.tvb ] || echo gone)"
  unit_is inactive
  equal 'its result' success "$(systemctl show -P Result m7-cpld-update.service)"
  is_state none
  equal 'the memory' "$good" "$(cat $sim/memory)"
  equal 'what is left in the folder' lock "$(ls $state)"

  # It was cut off, which takes a while, and fails from now on.
  keep_faults dead-row=1:5
  set_faults dead-row=1:5
  exits 'a failing update' 1 m7-cpld-update begin /test/update.tvb
  said 'a failing update' /tmp/out 'error: failed at clock'
  said 'a failing update' /tmp/out 'not completed in try 1 of 3'
  is_state pending 1
  # Its second try, at the next boot, is cut off as well, before a boot of the case.
  touch /test/kept/cut
  again
}

boot_3() {
  equal 'whether the power was cut in the second try' yes "$([ -e /test/kept/cut ] || echo yes)"
  unit_is failed
  is_state failed 3
  said 'the marker' /tmp/status '^why not completed in 3 tries$'
  journalctl -b -u m7-cpld-update.service -o cat >/tmp/journal
  said 'the journal' /tmp/journal 'error: failed at clock'
  said 'the journal' /tmp/journal 'given up: not completed in 3 tries'
  again
}

boot_4() {
  unit_is failed
  is_state failed 3
  journalctl -b -u m7-cpld-update.service -o cat >/tmp/journal
  said 'the journal' /tmp/journal 'an update was given up: not completed in 3 tries'
  equal 'the clocks of a boot after that' 0 "$(clocks_seen)"

  # A file that was damaged meanwhile is not played on.
  set_faults dead-row=1:5
  exits 'a new update' 1 m7-cpld-update begin /test/update.tvb
  is_state pending 1
  printf x | dd of="$(ls $state/update.*/update.tvb)" bs=1 seek=100 conv=notrunc 2>/dev/null
  echo >$sim/counters
  exits 'a damaged file' 2 m7-cpld-update resume
  said 'a damaged file' /tmp/out 'given up: its files are not those with which it was begun'
  is_state failed 1
  equal 'the clocks of a damaged file' 0 "$(clocks_seen)"

  # Refused before anything was begun.
  exits forget 0 m7-cpld-update forget
  is_state none
  cp /test/update.tvb /tmp/unsealed.tvb
  tvb seal --remove /tmp/unsealed.tvb
  exits 'a file without a seal' 2 m7-cpld-update begin /tmp/unsealed.tvb
  said 'a file without a seal' /tmp/out 'unsealed.tvb is not sealed'
  is_state none
  echo 'OPTIONS="--idcode 1A014C35"' >/etc/default/m7-cpld-update
  exits 'a file for another chip' 2 m7-cpld-update begin /test/update.tvb
  said 'a file for another chip' /tmp/out 'it is another chip: its IDCODE is 0A014C35 instead of 1A014C35'
  is_state failed 1
  rm /etc/default/m7-cpld-update

  # Ended by a signal, it can be taken up.
  set_faults ''
  m7-cpld-update begin /test/update.tvb 2>/tmp/out &
  update=$!
  wait_for_clocks 500
  exits 'a second one' 2 m7-cpld-update resume
  said 'a second one' /tmp/out 'another one is at it'
  kill -TERM $update
  status=0
  wait $update || status=$?
  equal 'the exit code of a cancelled update' 3 $status
  is_state pending 1
  systemctl start --no-block m7-cpld-update.service
  wait_for_clocks 500
  systemctl stop m7-cpld-update.service
  equal 'the state after stopping the service' 'idle programming:user-abort' \
    "$(cat $sysfs/state) $(cat $sysfs/error)"
  is_state pending 2
  modprobe -r m7_cpldjtag_drv
  echo WAIT=2 >/etc/default/m7-cpld-update
  exits 'resuming it without the driver' 1 m7-cpld-update resume
  said 'resuming it without the driver' /tmp/out 'the chain is not there, or is busy, after 2 s; this was no try'
  is_state pending 2
  modprobe m7_cpldjtag_drv
  exits 'resuming it' 0 m7-cpld-update resume
  is_state none
  equal 'the memory' "$good" "$(cat $sim/memory)"
}
