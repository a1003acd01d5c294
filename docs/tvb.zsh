#compdef tvb
# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# Completion of tvb's command lines for zsh. Install it as _tvb in a folder of $fpath, such as
# /usr/local/share/zsh/site-functions. One option a line: docs/check-help reads them.

_tvb_commands() {
  local -a commands=(
    'compile:make a TVB file of an SVF file'
    'decompile:make an SVF file of a TVB file'
    'dump:show every record of a TVB file'
    'check:find what is wrong with a TVB file'
    'seal:seal TVB files, or take their seals away'
    'play:rehearse a download with the driver'\''s own code'
    'explain:tell why a download on a board has failed'
    'download:download files to the chain of this board'
    'status:tell what the framework of this board is doing'
    'probe:read the IDCODEs of this board'\''s chain'
    'rewrite:make the long run-tests of a TVB file short'
    'help:tell what a command does and which options it takes'
  )
  _describe command commands
}

_tvb_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '(- *)--version[print the version]' \
    '1:command:_tvb_commands' \
    '*::argument:_tvb_arguments'
}

_tvb_compile_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '(--output)-o+[TVB file to make]:TVB file:_files -g "*.tvb(-.)"' \
    '(-o)--output=[TVB file to make]:TVB file:_files -g "*.tvb(-.)"' \
    '--map=[write the lines that the scans come from]:map:_files -g "*.map(-.)"' \
    '--chain=[devices between TDI and the target, and between the target and TDO]:BEFORE,AFTER: ' \
    '--pause-as-idle[take Run-Test/Idle for every pause]' \
    '(--no-compress)--encoding=[encode all blocks alike]:encoding:(raw run-length nibble bit-coding lzw)' \
    '(--encoding)--no-compress[store all blocks as they are]' \
    '--require-idcode=[IDCODE to compare first]:IDCODE/MASK: ' \
    '--no-seal[leave out the seal]' \
    '--no-split[refuse a reset in the middle of the file]' \
    '--longest-wait=[milliseconds that one run-test may take]:milliseconds: ' \
    '--pin-ns=[nanoseconds that a pin call takes]:nanoseconds: ' \
    '(--quiet)-q[print no summary and no notes]' \
    '(-q)--quiet[print no summary and no notes]' \
    ':SVF file:_files -g "*.svf(-.)"'
}

_tvb_decompile_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '(--output)-o+[SVF file to write]:SVF file:_files -g "*.svf(-.)"' \
    '(-o)--output=[SVF file to write]:SVF file:_files -g "*.svf(-.)"' \
    '--force[take errors as the player does]' \
    ':TVB file:_files -g "*.tvb(-.)"'
}

_tvb_dump_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--json[print a JSON object a line]' \
    '--hex[show the data]' \
    ':TVB file:_files -g "*.tvb(-.)"'
}

_tvb_check_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--strict[fail on warnings too]' \
    ':TVB file:_files -g "*.tvb(-.)"'
}

_tvb_seal_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--remove[take the seals away]' \
    '--force[take a file with a wrong seal as it is]' \
    '*:TVB file:_files -g "*.tvb(-.)"'
}

_tvb_play_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--map=[name the line of the SVF that fails]:map:_files -g "*.map(-.)"' \
    '--pause-as-idle[take Run-Test/Idle for every pause of SVF files]' \
    '(--chain)--echo[answer what the file expects]' \
    '(--echo)--chain=[play to the simulated chain of this file]:chain file:_files -g "*.json(-.)"' \
    '--fail-at=[invert a bit that is read]:SCAN\:BIT: ' \
    '--vcd=[write a waveform]:waveform:_files -g "*.vcd(-.)"' \
    '--vcd-idle=[clocks to draw of a stay in Run-Test/Idle]:clocks: ' \
    '--vcd-state=[how to draw the TAP state]:form:(none bits string)' \
    '--scans=[write the scans as text]:text file:_files -g "*.txt(-.)"' \
    '--memory=[write the configuration memory as text]:text file:_files -g "*.txt(-.)"' \
    '--report=[write a page to look at]:page:_files -g "*.html(-.)"' \
    '--time[tell what the download takes on a board]' \
    '--pin-ns=[nanoseconds that a pin call takes]:nanoseconds: ' \
    '(--quiet)-q[print neither the log nor the summary]' \
    '(-q)--quiet[print neither the log nor the summary]' \
    '*:TVB or SVF file:_files -g "*.(tvb|svf)(-.)"'
}

_tvb_explain_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--clock=[clock of the last read]:clock: ' \
    '--read=[what was read]:level:(0 1)' \
    '--map=[name the line of the SVF that fails]:map:_files -g "*.map(-.)"' \
    '*:TVB or SVF file:_files -g "*.(tvb|svf)(-.)"'
}

_tvb_download_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--device=[folder of the framework]:folder:_files -/' \
    '--idcode=[download to this chip only]:IDCODE/MASK: ' \
    '--log=[kernel log]:file:_files' \
    '--map=[name the line of the SVF that fails]:map:_files -g "*.map(-.)"' \
    '--json[print a JSON object a line]' \
    '*:TVB or SVF file:_files -g "*.(tvb|svf)(-.)"'
}

_tvb_status_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--device=[folder of the framework]:folder:_files -/'
}

_tvb_probe_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--device=[folder of the framework]:folder:_files -/' \
    '--devices=[how many devices the chain has]:count: ' \
    '--log=[kernel log]:file:_files'
}

_tvb_rewrite_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '--longest-wait=[milliseconds that one run-test may take]:milliseconds: ' \
    '1:TVB file:_files -g "*.tvb(-.)"' \
    '2:TVB file to write:_files -g "*.tvb(-.)"'
}

_tvb_help_options() {
  _arguments \
    '(- *)-h[print a help text]' \
    '(- *)--help[print a help text]' \
    '1:command:_tvb_commands'
}

# Behind the command, $words begins with it.
_tvb_arguments() {
  local options=_tvb_$words[1]_options
  (( $+functions[$options] )) && $options
}

_tvb_options "$@"
