# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# The same part as the second of three devices; the others do not notice.
load_all "$three"
completes three.tvb
holds 2 "$text"
logs_good three.tvb 0a014c35
equal "the devices' instructions" '1: instruction 0xff status 0x00
2: instruction 0x11 status 0x04
3: instruction 0xff status 0x00' "$(sed 1,2d $sim/state)"
