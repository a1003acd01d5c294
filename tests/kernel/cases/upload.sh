# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# An image that is written to the kernel, by the attributes of its class or by our own of the same names.
load_all "$alone"
class=/sys/class/firmware/cpldjtag
[ -e $class ] || class=$sysfs

# upload FILE
upload() {
  echo 1 >$class/loading
  cat "$firmware/$1" >$class/data
  echo 0 >$class/loading
}

wait_until_idle() {
  local tries=0
  while [ "$(cat $class/status)" != idle ]; do
    tries=$((tries + 1))
    [ $tries -lt 100 ] || fail 'the upload did not end'
    sleep 0.1
  done
}

equal 'the status' idle "$(cat $class/status)"
# The kernel's class takes them.
[ $class != $sysfs ] || refused 'data that nobody expects' sh -c "cat $firmware/alone.tvb >$class/data"
upload alone.tvb
wait_until_idle
equal 'the result' 1 "$(result)"
equal 'the file' image "$(attribute file)"
holds 1 "$text"
logs_good alone.tvb 0a014c35

clear_log
upload wrong-idcode.tvb
wait_until_idle
equal 'the result' 0 "$(result)"
equal 'the error' programming:hw-error "$(attribute error)"

# A file that is written in pieces is one image.
echo 1 >$class/loading
equal 'the loading' 1 "$(cat $class/loading)"
dd if=$firmware/alone.tvb of=$class/data bs=7 2>/dev/null
echo 0 >$class/loading
wait_until_idle
equal 'the result' 1 "$(result)"

# What is taken back is not played.
clear_log
echo 1 >$class/loading
cat $firmware/alone.tvb >$class/data
echo -1 >$class/loading
equal 'the status' idle "$(cat $class/status)"
same_bytes 'the log' '' <$log

upload long-compared.tvb
wait_for running
equal 'the status' yes "$(case $(cat $class/status) in
  transferring | programming) echo yes ;; esac)"
equal 'what remains' "$(size_of long-compared.tvb)" "$(cat $class/remaining_size)"
equal 'a download meanwhile' 'Device or resource busy' "$(download alone.tvb)"
echo 1 >$class/cancel
wait_until_idle
equal 'the result' 0 "$(result)"
equal 'the error' programming:user-abort "$(attribute error)"

# It has the name that it is given, for once.
long=$(printf '%0253d' 0)
for name in '' "${long}0" "$(printf 'two\nlines')"; do
  refused "the name '$name'" sh -c 'echo "$1" >'$sysfs/image_name '' "$name"
done
echo "$long" >$sysfs/image_name
equal 'the longest name' "$long" "$(attribute image_name)"
clear_kernel_log
echo 'an update.tvb' >$sysfs/image_name
upload alone.tvb
wait_until_idle
equal 'the result' 1 "$(result)"
equal 'the file' 'an update.tvb' "$(attribute file)"
equal 'the message' "cpldjtag: an update.tvb: completed, $(attribute clocks) clocks in MS ms" \
  "$(kernel_log | grep ^cpldjtag | sed 's/in [0-9]* ms/in MS ms/')"
equal 'the name of the next' image "$(attribute image_name)"

# Both have the same word for what went wrong.
rmmod m7_cpldjtag_drv
upload alone.tvb
wait_until_idle
equal 'the error without a driver' preparing:read-write-error "$(attribute error)"
equal 'the same word' read-write-error "$(cut -d: -f2 $class/error)"
load_driver
unload_all
