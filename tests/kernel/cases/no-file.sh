# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Names of missing and empty files, and impossible names: the driver is not even called.
load_all "$alone"
completes alone.tvb
clear_log
equal 'a missing file' 'No such file or directory' "$(download missing.tvb)"
equal 'the result' none "$(result)"
equal 'an empty name' 'Invalid argument' "$(download '')"
equal 'an absolute name' 'Invalid argument' "$(download /lib/firmware/alone.tvb)"
equal 'a name that climbs' 'Invalid argument' "$(download ../firmware/alone.tvb)"
equal 'a name of two lines' 'Invalid argument' "$(download "$(printf 'alone\n.tvb')")"
equal 'a name of 300 characters' 'Invalid argument' "$(download "$(printf '%0300d' 0)")"
equal 'an empty file' 'Invalid argument' "$(download empty.tvb)"
equal 'the result' none "$(result)"
same_bytes 'the log' '' <$log
completes alone.tvb
