# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# A download without a driver.
load_log
load_sim "$alone"
load_framework
equal 'the download' 'No such device' "$(download alone.tvb)"
equal 'the result' none "$(result)"
load_driver
completes alone.tvb
