# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# TDO stuck at 0.
load_all "$alone"
set_faults tdo-stuck-0
fails alone.tvb
logs_unverified alone.tvb 00000000
holds 1 "$zero"
set_faults ''
completes alone.tvb
