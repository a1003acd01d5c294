# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A module that another one needs stays.
load_all "$alone"
for module in cpldjtag jtag_sim log; do
  refused "unloading $module" rmmod $module
  is_loaded $module || fail "$module is gone"
done
refused 'loading the driver twice' load_driver
completes alone.tvb
unload_all
equal 'the modules left' '' "$(grep -E '^(m7_cpldjtag_drv|cpldjtag|jtag_sim|log) ' /proc/modules)"
