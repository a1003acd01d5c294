# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Root writes to and reads from every file that the modules show, whatever its mode: what the mode
# does not allow is refused, the kernel never complains, and a download succeeds afterwards.
load_all "$three"

# The least that there must be, so that a walk that finds nothing does not pass.
equal 'the files of the chain' 'chain counters faults memory power scans state' "$(ls $sim | xargs)"
equal 'the files of the log' 'bytes dropped' "$(ls ${log%/*} | xargs)"
equal 'the parameters' 'base chain faults lines log_kib require_seal skip_same_level store_kib tck tdi tdo tms' \
  "$(ls /sys/module/log/parameters /sys/module/cpldjtag/parameters \
    /sys/module/jtag_sim/parameters | grep -v '^/' | xargs | tr ' ' '\n' | sort | xargs)"

# error_of COMMAND: prints why it failed, without the names before the reason; nothing if it did not.
error_of() {
  sh -c "$1" 2>&1 >/dev/null | sed 's/.*: //'
}

# try FILE: writes, reads, and does both through one descriptor.
try() {
  local mode=$(stat -c %a "$1")
  case $mode in
    [0145]??) refused "writing to $1 ($mode)" sh -c "echo x >$1" ;;
    *) sh -c "echo x >$1" || : ;;
  esac
  case $mode in
    [0123]??) refused "reading from $1 ($mode)" cat "$1" ;;
    *) cat "$1" >/dev/null || : ;;
  esac
  sh -c "exec 3<>$1; echo x >&3; cat <&3 >/dev/null" || :
  if dmesg | grep -E 'Unable to handle|Oops|BUG:|WARNING:'; then
    fail "the kernel complains after $1"
  fi
  held "$1 is safe"
}

clear_kernel_log
tried=0
for file in $(find /sys/kernel/debug/log $sim $sysfs /sys/module/log /sys/module/cpldjtag \
  /sys/module/jtag_sim /sys/module/m7_cpldjtag_drv "$(chip_dir)" -type f); do
  try "$file"
  tried=$((tried + 1))
done
[ $tried -ge 50 ] || fail "only $tried files were found"

equal 'writing to the chain' 'Permission denied' "$(error_of "echo x >$sim/chain")"
equal 'writing to the count of lost bytes' 'Permission denied' \
  "$(error_of "echo x >${log%/*}/dropped")"
equal 'reading from the power' 'Permission denied' "$(error_of "cat $sim/power")"
equal 'reading from the download' 'Permission denied' "$(error_of "cat $sysfs/download")"
for file in $sim/chain $sim/state $sim/counters $sim/scans $sim/memory $sim/faults $log \
  ${log%/*}/dropped $sysfs/result $sysfs/state $sysfs/drivers $sysfs/pins $sysfs/error $sysfs/file \
  $sysfs/crc $sysfs/elapsed_ms $sysfs/clocks $sysfs/reads $sysfs/last_read $sysfs/total_clocks \
  $sysfs/image_name; do
  equal "reading from $file" '' "$(error_of "cat $file")"
done
for file in $sim/counters $sim/scans $sim/power $log; do
  equal "writing to $file" '' "$(error_of "echo x >$file")"
done

clear_log
completes three.tvb
holds 2 "$text"
logs_good three.tvb 0a014c35
unload_all
