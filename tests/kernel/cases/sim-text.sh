# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Impossible chains and faults are refused; the others read back as they were set.
load_log
refused 'a chain of unknown words' load_sim nonsense
refused 'an impossible instruction' load_sim idcode=1,instruction=255
refused 'an unknown fault' insmod $modules/jtag_sim.ko faults=nonsense
refused 'a device that is not there' insmod $modules/jtag_sim.ko faults=missing=2
load_sim "$three"
equal 'the chain' '1: idcode 0x00000013 by 224
2: idcode 0x0a014c35 by 6, part 8x32, erase 100, program 20
3: bypass' "$(cat $sim/chain)"
set_faults 'flip=3:4;dead-row=2:7'
equal 'the faults' 'flip=3:4;dead-row=2:7' "$(cat $sim/faults)"
equal 'a row that is not there' 'Invalid argument' \
  "$( (echo dead-row=2:8 >$sim/faults) 2>&1 | sed 's/.*: //')"
equal 'the faults' 'flip=3:4;dead-row=2:7' "$(cat $sim/faults)"
set_faults ''
equal 'the faults' '' "$(cat $sim/faults)"
