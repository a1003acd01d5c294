# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A sealed file plays as it is; a damaged one is refused before any line moves.
load_all "$alone"
completes sealed.tvb
holds 1 "$text"
logs_good sealed.tvb 0a014c35

# untouched WHAT FILE: it is refused, the driver is not called, and no line moves.
untouched() {
  echo >$sim/counters
  clear_log
  clear_kernel_log
  equal "$1" 'Bad message' "$(download $2)"
  equal "the error of $1" preparing:firmware-invalid "$(attribute error)"
  equal "the result of $1" none "$(result)"
  equal "the edges of $1" 0 "$(awk '{ n += $2 } END { print n }' $sim/counters)"
  same_bytes "the log of $1" '' <$log
}

size=$(size_of sealed.tvb)
# change OFFSET: a copy with that byte changed.
change() {
  cp $firmware/sealed.tvb $firmware/changed.tvb
  byte=$(dd if=$firmware/sealed.tvb bs=1 skip=$1 count=1 2>/dev/null | hexdump -e '1/1 "%d"')
  printf "\\$(printf %o $((byte ^ 1)))" |
    dd of=$firmware/changed.tvb bs=1 seek=$1 conv=notrunc 2>/dev/null
}

for offset in 0 7 10 11 12 16 $((size / 3)) $((size / 2)) $((size - 4)) $((size - 1)); do
  change $offset
  untouched "a change of byte $offset" changed.tvb
done
for length in 11 16 $((size / 2)) $((size - 4)) $((size - 1)); do
  head -c $length $firmware/sealed.tvb >$firmware/cut.tvb
  untouched "a cut after $length bytes" cut.tvb
done
equal 'the kernel log of the last' 'cpldjtag: cut.tvb: not played, for its seal is not that of its content: the file is damaged' \
  "$(kernel_log | grep ^cpldjtag)"

completes alone.tvb
echo 1 >/sys/module/cpldjtag/parameters/require_seal
untouched 'a file without a seal' alone.tvb
equal 'the kernel log of it' 'cpldjtag: alone.tvb: not played, for it has no seal, and require_seal is set' \
  "$(kernel_log | grep ^cpldjtag)"
completes sealed.tvb
