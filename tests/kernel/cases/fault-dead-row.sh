# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A row that cannot be programmed.
load_all "$alone"
set_faults dead-row=1:3
fails alone.tvb
logs_unverified alone.tvb 0a014c35
holds 1 '0123456789ab\377\377\377\377GHIJKLMNOPQRSTUV'
set_faults ''
completes alone.tvb
holds 1 "$text"
