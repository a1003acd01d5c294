# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Download, unload, load again, download again, and many times over.
load_all "$three"
completes three.tvb
for round in 1 2 3 4 5 6 7 8; do
  rmmod m7_cpldjtag_drv
  equal 'a download without a driver' 'No such device' "$(download three.tvb)"
  clear_log
  load_driver
  untimed <$log | same_bytes 'the log of the load' "$begin$loaded$end"
  clear_log
  completes three.tvb
  logs_good three.tvb 0a014c35
done
unload_all
load_all "$alone"
completes alone.tvb
completes alone.tvb
holds 1 "$text"
unload_all
