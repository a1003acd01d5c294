# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# What stands in a loop is played as often as the loop says.
load_all "$alone"
completes loop.tvb
holds 1 looplooplooplooplooplooplooploop
logs_good loop.tvb 0a014c35
