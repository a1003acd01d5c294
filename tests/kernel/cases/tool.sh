# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The tool on the board: downloads, a failure explained as on the desk, cancel, wrong chip, damage.
load_all "$alone"
cd $firmware

# exits WHAT CODE COMMAND...: the command exits with that code; what it prints is kept in /tmp/out
# and /tmp/err.
exits() {
  local what=$1 code=$2 status=0
  shift 2
  "$@" >/tmp/out 2>/tmp/err || status=$?
  cat /tmp/out /tmp/err
  equal "the exit code of $what" "$code" "$status"
}

# said WHAT FILE PATTERN: a line of it matches.
said() {
  grep -qE "$3" "$2" || fail "$1 did not say '$3'"
  held "$1 said: $3"
}

exits 'a good file' 0 tvb download alone.tvb sealed.tvb
said 'a good file' /tmp/out '^alone.tvb: done, [0-9,]+ clocks in'
said 'a good file' /tmp/out '^sealed.tvb: done, [0-9,]+ clocks in'
holds 1 "$text"
equal 'the foreseen clocks' "$(attribute clocks)" "$(tvb download --json sealed.tvb |
  sed -n 's/.*"event":"begin".*"total_clocks":\([0-9]*\).*/\1/p')"
equal 'the file' sealed.tvb "$(attribute file)"
exits status 0 tvb status
said status /tmp/out '^last end +done$'
said status /tmp/out "^driver +tvb_cpldjtag_drv$"

# The desk has played the same faults to the same chain: each bit in its own file.
explained=0
for desk in /test/desk/*; do
  bit=${desk##*/}
  set_faults flip=$bit
  status=0
  tvb download alone.tvb 2>/tmp/err || status=$?
  [ $status = 1 ] || fail "the download with bit $bit flipped exits with $status"
  sed '1d; $d' /tmp/err >/tmp/told
  cmp -s $desk /tmp/told || {
    cat $desk /tmp/err
    fail "board and desk tell otherwise of bit $bit"
  }
  explained=$((explained + 1))
done
echo "$explained bits explained as on the desk"
equal 'the explained bits' 50 $explained
said 'a failure' /tmp/err '^alone.tvb: error: failed at clock'
set_faults ''

echo >$sim/counters
head -c 200 sealed.tvb >cut.tvb
exits 'a damaged file' 2 tvb download cut.tvb
said 'a damaged file' /tmp/err '^cut.tvb: error: the file is damaged: its seal says CRC'
equal 'the edges of a damaged file' 0 "$(clocks_seen)"

exits 'the right chip' 0 tvb download --idcode 0A014C35 alone.tvb
set_faults tdo-stuck-1
exits 'no chip' 2 tvb download --idcode 0A014C35 alone.tvb
said 'no chip' /tmp/err 'nothing answers \(FFFFFFFF\): is the chain powered\?'
set_faults ''
exits 'another chip' 2 tvb download --idcode 1A014C35 alone.tvb
said 'another chip' /tmp/err 'it is another chip: its IDCODE is 0A014C35 instead of 1A014C35'
exits 'another revision' 0 tvb download --idcode 1A014C35/0FFFFFFF alone.tvb
exits probe 0 tvb probe
said probe /tmp/out '^device 1 of 1: 0A014C35$'
holds 1 "$text"

# What is played is the file with its wait in pieces.
exits 'a rewrite' 0 tvb rewrite long-wait.tvb pieces.tvb --longest-wait 20
completes pieces.tvb
pieces=$(attribute crc)
completes loop.tvb
exits 'a long wait' 0 tvb download long-wait.tvb
said 'a long wait' /tmp/err \
  '^long-wait.tvb: note: 1 run-test of more than a second, played in pieces of 20 ms$'
said 'a long wait' /tmp/out '^long-wait.tvb: done, [0-9,]+ clocks in'
equal 'the image of a long wait' "$pieces" "$(attribute crc)"
[ "$(attribute elapsed_ms)" -ge 1500 ] || fail "the long wait took $(attribute elapsed_ms) ms"
held 'the long wait'
holds 1 "$text"

for signal in INT TERM; do
  tvb download long-compared.tvb >/tmp/out 2>/tmp/err &
  tool=$!
  wait_for running
  sleep 0.5
  kill -$signal $tool
  status=0
  wait $tool || status=$?
  cat /tmp/err
  equal "the exit code after $signal" 3 $status
  said "the tool after $signal" /tmp/err '^long-compared.tvb: error: cancelled at clock'
  equal 'the error' programming:user-abort "$(attribute error)"
done

# A file that waits at its end, for 900 ms at 1 kHz, cannot be cancelled there; the next one is not played.
{ head -c 39 slow.tvb; printf '\x5e\x38\x04\x01\x18\x8e\x87\x02\x17\x5e\x10\x04\x00'; } >waits.tvb
tvb download waits.tvb alone.tvb >/tmp/out 2>/tmp/err &
tool=$!
wait_for running
sleep 0.4
kill -INT $tool
status=0
wait $tool || status=$?
cat /tmp/out /tmp/err
equal 'the exit code after a signal in the last wait' 3 $status
said 'the tool after it' /tmp/out '^waits.tvb: done'
said 'the tool after it' /tmp/err '^alone.tvb: error: cancelled at clock 0 of'
equal 'the last file' waits.tvb "$(attribute file)"
equal 'the name of the next' image "$(attribute image_name)"
equal 'the clocks of the next' 0 "$(attribute total_clocks)"
exits 'a good file after that' 0 tvb download alone.tvb
holds 1 "$text"
unload_all

load_all "$three"
exits 'probe of three' 0 tvb probe --devices 3
said 'probe of three' /tmp/out '^device 2 of 3: 0A014C35$'
unload_all
exits 'a board without the framework' 2 tvb status
said 'a board without the framework' /tmp/err 'is cpldjtag loaded'
