# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# One bit of one scan arrives inverted. The first data scan reads the IDCODE for the log alone, the
# second compares it, the fourteenth reads the first row back.
load_all "$alone"
set_faults flip=1:0
completes alone.tvb
logs_good alone.tvb 0a014c34
for bit in 2:0 2:31 14:0 14:31 21:31; do
  clear_log
  set_faults flip=$bit
  fails alone.tvb
  logs_unverified alone.tvb 0a014c35
done
set_faults ''
completes alone.tvb
