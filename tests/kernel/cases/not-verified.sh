# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A comparison that fails stops the lines where they are; the next download starts afresh.
load_all "$three"
fails wrong-idcode.tvb
logs_unverified wrong-idcode.tvb 0a014c35
# The bypass bit of the third device has gone out, and then TCK stays low.
equal 'the TAP' 'tap Shift-DR' "$(head -n1 $sim/state)"
equal 'the clocks in Shift-DR' 'Shift-DR 34' "$(grep ^Shift-DR $sim/counters)"
equal 'TCK' tck=0 "$(sed -n 's/^lines \(tck=.\).*/\1/p' $sim/state)"

clear_log
completes idcode.tvb
logs_good idcode.tvb 0a014c35

# The driver does not see it in the very last record, but the lines do.
head -c $(($(size_of wrong-idcode.tvb) - 4)) $firmware/wrong-idcode.tvb >$firmware/cut.tvb
clear_log
clear_kernel_log
fails cut.tvb
grep -q 'end rtn_code 0' $log || fail 'the driver saw it'
equal 'the message' "cpldjtag: cut.tvb: failed at clock $(attribute clocks): TDO read 1" \
  "$(kernel_log | grep ^cpldjtag)"
equal 'the error' programming:hw-error "$(attribute error)"
