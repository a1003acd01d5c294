# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# What the cases share. A case has a function for each boot of the board, run with -eu: a command that
# fails breaks the case off, and so does a check that does not hold.
sysfs=/sys/devices/platform/cpldjtag
sim=/sys/kernel/debug/jtag_sim
state=/var/lib/m7-cpldjtag

# The chain's memory when update.tvb was completed.
good='1 0 30313233
1 1 34353637
1 2 38396162
1 3 63646566
1 4 4748494a
1 5 4b4c4d4e
1 6 4f505152
1 7 53545556'

# fail TEXT...: the case has failed.
fail() {
  echo "$*" | head -n1 >>/test/kept/reason
  echo "FAILED: $*"
  exit 1
}

# held WHAT: a check held.
held() {
  printf . >>/test/kept/checks
  echo "ok: $*"
}

# equal WHAT EXPECTED FOUND
equal() {
  [ "$2" = "$3" ] || fail "$1 is
$3
not
$2"
  held "$1"
}

# exits WHAT CODE COMMAND...: the command exits with that code; what it prints is kept in /tmp/out.
exits() {
  local what=$1 code=$2 status=0
  shift 2
  "$@" >/tmp/out 2>&1 || status=$?
  cat /tmp/out
  equal "the exit code of $what" "$code" $status
}

# said WHAT FILE PATTERN: a line of it matches.
said() {
  grep -qE -- "$3" "$2" || fail "$1 did not say '$3'"
  held "$1 said: $3"
}

# set_faults TEXT: the chain's faults from here on.
set_faults() {
  echo "$1" >$sim/faults
}

# The simulated chain forgets all it holds.
erase_memory() {
  modprobe -r m7_cpldjtag_drv
  modprobe -r cpldjtag
  modprobe -r jtag_sim
  modprobe jtag_sim
  modprobe m7_cpldjtag_drv
}

# clocks_seen: how many periods of TCK the chain has seen.
clocks_seen() {
  awk '!/^(tms|tdi|ir|dr)-/ { clocks += $2 } END { print clocks }' $sim/counters
}

# wait_for_clocks COUNT: until the download that runs has got so far.
wait_for_clocks() {
  local tries=0
  until [ "$(cat $sysfs/state)" = running ] && [ "$(cat $sysfs/clocks)" -ge "$1" ]; do
    tries=$((tries + 1))
    [ $tries -lt 200 ] || fail "no download got to clock $1"
    sleep 0.1
  done
}

# Ends this boot; the case goes on at the next.
again() {
  sync
  touch /run/again
  exit 0
}

# The same, by the power's loss. At the next boot cut.service does it where there is /test/kept/cut.
cut_the_power() {
  echo 'CUT THE POWER' >/dev/vport0p1
  sleep 60
  fail 'the power was not cut'
}
