# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# What the cases share. A case is a script run with -eu: a command that fails breaks it off, and so
# does a check that does not hold.

modules=/lib/modules/board
firmware=/lib/firmware
sysfs=/sys/devices/platform/cpldjtag
sim=/sys/kernel/debug/jtag_sim
log=/sys/kernel/debug/log/bytes

# The chains that make_files.cc makes its files for.
part='idcode=0x0A014C35,part=8x32,erase=100,program=20'
alone=$part
three="idcode=0x13,instruction=224;$part;bypass"

# The messages of a load, with the time that it took as untimed() makes it, and of an unload.
begin='cpldjtag2_drv MODULE INIT BEGIN'
loaded='m7 cpldjtag_drv runtest compensation module init success.'
end='cpldjtag2_drv MODULE INIT END(TIMEms)'
unloaded='cpldjtag_drv runtest compensation module exit success'

# ---- checks

# fail TEXT...: the case has failed.
fail() {
  echo "$*" | head -n1 >>/run/reason
  echo "FAILED: $*"
  exit 1
}

# held WHAT: a check held.
held() {
  printf . >>/run/checks
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

# same_bytes WHAT EXPECTED: standard input is exactly what printf makes of EXPECTED.
same_bytes() {
  cat >/tmp/found
  printf "$2" >/tmp/expected
  if ! cmp -s /tmp/expected /tmp/found; then
    echo '--- expected'
    cat -A /tmp/expected
    echo '--- found'
    cat -A /tmp/found
    echo '---'
    fail "$1 is not as expected"
  fi
  held "$1"
}

# refused WHAT COMMAND...: COMMAND fails.
refused() {
  local what=$1
  shift
  if "$@"; then
    fail "$what succeeded"
  fi
  held "$what is refused"
}

# ---- modules

is_loaded() {
  grep -q "^$1 " /proc/modules
}

# Prints the folder in /sys of the simulated chain's GPIO chip; nothing where there is none.
chip_dir() {
  local chip
  for chip in /sys/class/gpio/gpiochip*; do
    if [ "$(cat "$chip/label")" = jtag_sim ]; then
      realpath "$chip"
    fi
  done
}

# Prints the number of the first line of the simulated chain.
first_line() {
  local dir=$(chip_dir)
  [ -z "$dir" ] || cat "$dir/base"
}

load_log() {
  insmod $modules/log.ko
}

# load_sim CHAIN
load_sim() {
  insmod $modules/jtag_sim.ko "chain=$1"
}

# load_null_chip [PARAMETER...]: the chip that does nothing, and the framework on its lines.
load_null_chip() {
  insmod $modules/null_chip.ko "$@"
  insmod $modules/cpldjtag.ko lines=null_chip:0,1,2,3
}

unload_null_chip() {
  rmmod cpldjtag
  rmmod null_chip
}

load_framework() {
  local tck=$(first_line)
  insmod $modules/cpldjtag.ko tck=$tck tms=$((tck + 1)) tdi=$((tck + 2)) tdo=$((tck + 3))
}

load_driver() {
  insmod $modules/m7_cpldjtag_drv.ko
}

# load_all CHAIN: the four modules, and an empty log.
load_all() {
  load_log
  load_sim "$1"
  load_framework
  load_driver
  clear_log
}

unload_all() {
  rmmod m7_cpldjtag_drv
  rmmod cpldjtag
  rmmod jtag_sim
  rmmod log
}

clear_log() {
  echo >$log
}

# clear_kernel_log: what dmesg says from here on is new.
clear_kernel_log() {
  dmesg -c >/dev/null
}

# kernel_log: the messages since then, without the time, nor those of the firmware loader that only
# carry the name of our device.
kernel_log() {
  dmesg | sed 's/^\[ *[0-9.]*\] //; /^cpldjtag cpldjtag: firmware: /d'
}

# untimed: passes the log on, less the time that a load took.
untimed() {
  sed -E 's/(INIT END)\((<1|[1-9][0-9]*)ms\)/\1(TIMEms)/'
}

# set_faults TEXT: the chain's faults from here on.
set_faults() {
  echo "$1" >$sim/faults
}

# wait_for STATE: until "state" says so, but not longer than ten seconds.
wait_for() {
  local tries=0
  while [ "$(cat $sysfs/state)" != "$1" ]; do
    tries=$((tries + 1))
    [ $tries -lt 100 ] || fail "the state did not become $1"
    sleep 0.1
  done
}

# clocks_seen: how many periods of TCK the chain has seen.
clocks_seen() {
  awk '!/^(tms|tdi|ir|dr)-/ { clocks += $2 } END { print clocks }' $sim/counters
}

# attribute NAME: what it says.
attribute() {
  cat $sysfs/$1
}

# ---- downloads

# What the files of make_files.cc put into the part's memory, and what is there at first and after
# an erase.
text=0123456789abcdefGHIJKLMNOPQRSTUV
zero='\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0'

size_of() {
  wc -c <"$firmware/$1"
}

# download FILE: prints "ok", or why the kernel refused.
download() {
  local text
  if text=$( (echo "$1" >$sysfs/download) 2>&1 ); then
    echo ok
  else
    echo "${text##*: }"
  fi
}

result() {
  cat $sysfs/result
}

# memory_of DEVICE: the rows of its memory as text.
memory_of() {
  local device row bytes
  while read -r device row bytes; do
    if [ "$device" = "$1" ]; then
      printf "$(echo "$bytes" | sed 's/../\\x&/g')"
    fi
  done <$sim/memory
}

# said TEXT: when the kernel log said so, in nanoseconds.
said() {
  dmesg | sed -nE "s/^\[ *([0-9]+)\.([0-9]{6})\] log: .*$1.*/\1\2000/p"
}

# ns_of FILE: how long the driver takes for a download, which is completed. What the kernel has put off
# is done before.
ns_of() {
  clear_kernel_log
  sleep 0.2
  completes "$1" >&2
  echo $(($(said 'm7 process done') - $(said 'm7 cplddownload start')))
}

# completes FILE: the download is completed, by what it returns and by "result".
completes() {
  equal "the download of $1" ok "$(download "$1")"
  equal "the result of $1" 1 "$(result)"
}

# fails FILE: the same for one that fails.
fails() {
  equal "the download of $1" 'Input/output error' "$(download "$1")"
  equal "the result of $1" 0 "$(result)"
}

# holds DEVICE TEXT: the memory of a device is exactly what printf makes of TEXT.
holds() {
  memory_of "$1" | same_bytes "the memory of device $1" "$2"
}

# logs_good FILE IDCODE: the log is that of a completed download, byte for byte.
logs_good() {
  local size=$(size_of "$1")
  same_bytes "the log of $1" "m7 cplddownload start file len $size\r\nDECODE CHIP : $2\
m7 process done file len $size\r\nm7 cplddownload end rtn_code 0\r\n" <$log
}

# logs_unverified FILE IDCODE: the log is that of a download in which a comparison failed.
logs_unverified() {
  same_bytes "the log of $1" "m7 cplddownload start file len $(size_of "$1")\r\nDECODE CHIP : $2\
Verify Failed\r\nm7 cplddownload end rtn_code -17\r\n" <$log
}
