# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# TDO stuck at 1.
load_all "$alone"
set_faults tdo-stuck-1
fails alone.tvb
logs_unverified alone.tvb ffffffff
holds 1 "$zero"
set_faults ''
completes alone.tvb
