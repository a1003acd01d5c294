# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# Completion of tvb's command lines for fish. Install it as tvb.fish in a folder of
# $fish_complete_path, such as /usr/local/share/fish/vendor_completions.d. One option a line:
# docs/check-help reads them.

# True where the command line holds the command $argv[1]; without one, where it holds none yet.
function __tvb_in
    set -l words (commandline -opc)
    test "$words[2]" = "$argv[1]"
end

# The files that end in .$argv[1], and folders to go on in.
function __tvb_files
    __fish_complete_suffix .$argv[1]
end

complete -c tvb -f
complete -c tvb -s h -l help -d 'Print a help text'
complete -c tvb -n '__tvb_in' -l version -d 'Print the version'

complete -c tvb -n '__tvb_in' -a compile -d 'Make a TVB file of an SVF file'
complete -c tvb -n '__tvb_in' -a decompile -d 'Make an SVF file of a TVB file'
complete -c tvb -n '__tvb_in' -a dump -d 'Show every record of a TVB file'
complete -c tvb -n '__tvb_in' -a check -d 'Find what is wrong with a TVB file'
complete -c tvb -n '__tvb_in' -a seal -d 'Seal TVB files, or take their seals away'
complete -c tvb -n '__tvb_in' -a play -d 'Rehearse a download with the driver\'s own code'
complete -c tvb -n '__tvb_in' -a explain -d 'Tell why a download on a board has failed'
complete -c tvb -n '__tvb_in' -a download -d 'Download files to the chain of this board'
complete -c tvb -n '__tvb_in' -a status -d 'Tell what the framework of this board is doing'
complete -c tvb -n '__tvb_in' -a probe -d 'Read the IDCODEs of the chain of this board'
complete -c tvb -n '__tvb_in' -a rewrite -d 'Make the long run-tests of a TVB file short'
complete -c tvb -n '__tvb_in' -a help -d 'Tell what a command does and which options it takes'

complete -c tvb -n '__tvb_in compile' -s o -l output -ra '(__tvb_files tvb)' -d 'TVB file to make'
complete -c tvb -n '__tvb_in compile' -l map -ra '(__tvb_files map)' -d 'Write the lines that the scans come from'
complete -c tvb -n '__tvb_in compile' -l chain -x -d 'Devices before and behind the target'
complete -c tvb -n '__tvb_in compile' -l pause-as-idle -d 'Take Run-Test/Idle for every pause'
complete -c tvb -n '__tvb_in compile' -l encoding -xa 'raw run-length nibble bit-coding lzw' -d 'Encode all blocks alike'
complete -c tvb -n '__tvb_in compile' -l no-compress -d 'Store all blocks as they are'
complete -c tvb -n '__tvb_in compile' -l require-idcode -x -d 'IDCODE to compare first'
complete -c tvb -n '__tvb_in compile' -l no-seal -d 'Leave out the seal'
complete -c tvb -n '__tvb_in compile' -l no-split -d 'Refuse a reset in the middle of the file'
complete -c tvb -n '__tvb_in compile' -l longest-wait -x -d 'Milliseconds that one run-test may take'
complete -c tvb -n '__tvb_in compile' -l pin-ns -x -d 'Nanoseconds that a pin call takes'
complete -c tvb -n '__tvb_in compile' -s q -l quiet -d 'Print no summary and no notes'
complete -c tvb -n '__tvb_in compile' -a '(__tvb_files svf)'

complete -c tvb -n '__tvb_in decompile' -s o -l output -ra '(__tvb_files svf)' -d 'SVF file to write'
complete -c tvb -n '__tvb_in decompile' -l force -d 'Take errors as the player does'
complete -c tvb -n '__tvb_in decompile' -a '(__tvb_files tvb)'

complete -c tvb -n '__tvb_in dump' -l json -d 'Print a JSON object a line'
complete -c tvb -n '__tvb_in dump' -l hex -d 'Show the data'
complete -c tvb -n '__tvb_in dump' -a '(__tvb_files tvb)'

complete -c tvb -n '__tvb_in check' -l strict -d 'Fail on warnings too'
complete -c tvb -n '__tvb_in check' -a '(__tvb_files tvb)'

complete -c tvb -n '__tvb_in seal' -l remove -d 'Take the seals away'
complete -c tvb -n '__tvb_in seal' -l force -d 'Take a file with a wrong seal as it is'
complete -c tvb -n '__tvb_in seal' -a '(__tvb_files tvb)'

complete -c tvb -n '__tvb_in play' -l map -ra '(__tvb_files map)' -d 'Name the line of the SVF that fails'
complete -c tvb -n '__tvb_in play' -l pause-as-idle -d 'Take Run-Test/Idle for every pause of SVF files'
complete -c tvb -n '__tvb_in play' -l echo -d 'Answer what the file expects'
complete -c tvb -n '__tvb_in play' -l chain -ra '(__tvb_files json)' -d 'Play to the simulated chain of this file'
complete -c tvb -n '__tvb_in play' -l fail-at -x -d 'Invert a bit that is read'
complete -c tvb -n '__tvb_in play' -l vcd -ra '(__tvb_files vcd)' -d 'Write a waveform'
complete -c tvb -n '__tvb_in play' -l vcd-idle -x -d 'Clocks to draw of a stay in Run-Test/Idle'
complete -c tvb -n '__tvb_in play' -l vcd-state -xa 'none bits string' -d 'How to draw the TAP state'
complete -c tvb -n '__tvb_in play' -l scans -ra '(__tvb_files txt)' -d 'Write the scans as text'
complete -c tvb -n '__tvb_in play' -l memory -ra '(__tvb_files txt)' -d 'Write the configuration memory as text'
complete -c tvb -n '__tvb_in play' -l report -ra '(__tvb_files html)' -d 'Write a page to look at'
complete -c tvb -n '__tvb_in play' -l time -d 'Tell what the download takes on a board'
complete -c tvb -n '__tvb_in play' -l pin-ns -x -d 'Nanoseconds that a pin call takes'
complete -c tvb -n '__tvb_in play' -s q -l quiet -d 'Print neither the log nor the summary'
complete -c tvb -n '__tvb_in play' -a '(__tvb_files tvb) (__tvb_files svf)'

complete -c tvb -n '__tvb_in explain' -l clock -x -d 'Clock of the last read'
complete -c tvb -n '__tvb_in explain' -l read -xa '0 1' -d 'What was read'
complete -c tvb -n '__tvb_in explain' -l map -ra '(__tvb_files map)' -d 'Name the line of the SVF that fails'
complete -c tvb -n '__tvb_in explain' -a '(__tvb_files tvb) (__tvb_files svf)'

complete -c tvb -n '__tvb_in download' -l device -ra '(__fish_complete_directories)' -d 'Folder of the framework'
complete -c tvb -n '__tvb_in download' -l idcode -x -d 'Download to this chip only'
complete -c tvb -n '__tvb_in download' -l log -rF -d 'Kernel log'
complete -c tvb -n '__tvb_in download' -l map -ra '(__tvb_files map)' -d 'Name the line of the SVF that fails'
complete -c tvb -n '__tvb_in download' -l json -d 'Print a JSON object a line'
complete -c tvb -n '__tvb_in download' -a '(__tvb_files tvb) (__tvb_files svf)'

complete -c tvb -n '__tvb_in status' -l device -ra '(__fish_complete_directories)' -d 'Folder of the framework'

complete -c tvb -n '__tvb_in probe' -l device -ra '(__fish_complete_directories)' -d 'Folder of the framework'
complete -c tvb -n '__tvb_in probe' -l devices -x -d 'How many devices the chain has'
complete -c tvb -n '__tvb_in probe' -l log -rF -d 'Kernel log'

complete -c tvb -n '__tvb_in rewrite' -l longest-wait -x -d 'Milliseconds that one run-test may take'
complete -c tvb -n '__tvb_in rewrite' -a '(__tvb_files tvb)'

complete -c tvb -n '__tvb_in help' -a 'compile decompile dump check seal play explain download status probe rewrite help'
