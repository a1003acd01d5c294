# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A file that is cut off anywhere. It is good only if it ends where a record ends.
load_all "$three"
size=$(size_of idcode.tvb)
cut=1
while [ $cut -lt $size ]; do
  head -c $cut $firmware/idcode.tvb >$firmware/cut.tvb
  clear_log
  clear_kernel_log
  case " 16 26 30 36 46 69 " in
    *" $cut "*)
      completes cut.tvb
      # With the header alone there is no record that would tell where the target sits.
      [ $cut = 16 ] && idcode=fffffff8 || idcode=0a014c35
      logs_good cut.tvb $idcode
      ;;
    *)
      fails cut.tvb
      if [ $cut -lt 16 ]; then
        grep -q 'end rtn_code -7' $log || fail "the log of $cut bytes"
      else
        grep -q 'end rtn_code -10' $log || fail "the log of $cut bytes"
        kernel_log | grep -qx 'Error: command file ends inside a record' ||
          fail "the kernel log of $cut bytes"
      fi
      held "the message for $cut bytes"
      ;;
  esac
  cut=$((cut + 1))
done
clear_log
completes idcode.tvb
logs_good idcode.tvb 0a014c35
