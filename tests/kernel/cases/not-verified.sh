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
