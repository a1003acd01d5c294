# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A device that is not fitted: the bits of the others come at the wrong time.
load_all "$three"
for missing in 1:fffffffe 2:fffffffe 3:0500a61a; do
  clear_log
  set_faults missing=${missing%:*}
  fails three.tvb
  logs_unverified three.tvb ${missing#*:}
  holds 2 "$zero"
done
set_faults ''
completes three.tvb
