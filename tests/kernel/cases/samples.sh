# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The files that `tvb compile` makes of the SVF samples, on the chains that they are for: this
# kernel's chain sees the scans that `tvb play` says, and is left with the same memory. A sample with
# resets is several files.
chip='idcode=0x0A014C35,part=16x128,erase=1000,program=50'

# sample NAME CHAIN
sample() {
  load_all "$2"
  completes $1.tvb
  part=2
  while [ -e /lib/firmware/$1-$part.tvb ]; do
    completes $1-$part.tvb
    part=$((part + 1))
  done
  sed 's/^[0-9]* \(..\) bits \([0-9]*\) idle [0-9]* /\1 \2 /' $sim/scans >/tmp/scans
  cmp /tmp/scans /test/samples/$1.scans || fail "the scans of $1 are not those of the rehearsal"
  held "the scans of $1"
  cmp $sim/memory /test/samples/$1.memory || fail "the memory after $1 is not the rehearsal's"
  held "the memory after $1"
  unload_all
}

for name in $(cat /test/samples/names); do
  case $name in
    target_by_pads | pads_that_compare) sample $name "idcode=0x13579BDF;$chip;bypass" ;;
    *) sample $name "$chip" ;;
  esac
done
