# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Every scan of a small file and every clock, as the chain saw them: the reset, the reading of the
# IDCODE before the file, the record that tells where the target sits, the comparison of the IDCODE.
load_all "$three"
completes idcode.tvb
logs_good idcode.tvb 0a014c35

ir='tdi 111111110110000011111111 tdo 100000001000000010000000'
idcode=10101100001100101000000001010000
equal 'the scans' "1 IR bits 24 idle 0 $ir
2 DR bits 33 idle 0 tdi 111111111111111111111111111111111 tdo 0$idcode
3 IR bits 24 idle 0 $ir
4 IR bits 24 idle 0 $ir
5 DR bits 34 idle 0 tdi 0000000000000000000000000000000000 tdo 0${idcode}0" "$(cat $sim/scans)"
equal 'the clocks' 'Test-Logic-Reset 11
Run-Test/Idle 5
Select-DR-Scan 5
Capture-DR 2
Shift-DR 67
Exit1-DR 2
Pause-DR 0
Exit2-DR 0
Update-DR 2
Select-IR-Scan 3
Capture-IR 3
Shift-IR 72
Exit1-IR 3
Pause-IR 0
Exit2-IR 0
Update-IR 3' "$(head -n16 $sim/counters)"
