# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# One clock too few in Run-Test/Idle after each row, and the rows do not take.
load_all "$alone"
fails short-wait.tvb
logs_unverified short-wait.tvb 0a014c35
clear_log
completes alone.tvb
logs_good alone.tvb 0a014c35
