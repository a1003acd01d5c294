# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A file with a bad header: not one line moves.
load_all "$alone"
fails bad-header.tvb
same_bytes 'the log' "m7 cplddownload start file len $(size_of bad-header.tvb)\r\n\
m7 pls check head\r\nm7 cplddownload end rtn_code -7\r\n" <$log
equal 'the clocks' 0 "$(awk '{ sum += $2 } END { print sum }' $sim/counters)"
clear_log
completes alone.tvb
logs_good alone.tvb 0a014c35
