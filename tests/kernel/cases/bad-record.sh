# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
# Records and fields that do not exist.
load_all "$alone"
fails unknown-opcode.tvb
same_bytes 'the log of the unknown opcode' "m7 cplddownload start file len \
$(size_of unknown-opcode.tvb)\r\nDECODE CHIP : 0a014c35\
Error: invalid file format, unkown opcode\r\nm7 cplddownload end rtn_code -10\r\n" <$log

clear_log
clear_kernel_log
fails unknown-tag.tvb
same_bytes 'the log of the unknown tag' "m7 cplddownload start file len \
$(size_of unknown-tag.tvb)\r\nDECODE CHIP : 0a014c35\
Error: Execute sir/sdr instruction fail!\r\nm7 cplddownload end rtn_code -10\r\n" <$log
equal 'the kernel log' 'Error: Invalid format when executing process sir or sdr instruction!' \
  "$(kernel_log | grep Error: | grep -v '^log:')"
completes alone.tvb
