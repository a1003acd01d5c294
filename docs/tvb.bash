# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# Completion of tvb's command lines for bash. Source it, or install it as
# /usr/share/bash-completion/completions/tvb.

# The files that end so, and folders to go on in.
_tvb_files() {
  local file
  compopt -o filenames 2>/dev/null
  while IFS= read -r file; do
    if [[ -d $file || $file == *."$1" ]]; then
      COMPREPLY+=("$file")
    fi
  done < <(compgen -f -- "$2")
}

_tvb_words() {
  COMPREPLY+=($(compgen -W "$1" -- "$2"))
}

# What an option is followed by; false if nothing.
_tvb_value() {
  case "$1 $2" in
    *' --encoding') _tvb_words 'raw run-length nibble bit-coding lzw' "$3" ;;
    *' --vcd-state') _tvb_words 'none bits string' "$3" ;;
    'compile -o' | 'compile --output') _tvb_files tvb "$3" ;;
    'decompile -o' | 'decompile --output') _tvb_files svf "$3" ;;
    'play --chain') _tvb_files json "$3" ;;
    *' --read') _tvb_words '0 1' "$3" ;;
    *' --log') compopt -o default 2>/dev/null ;;
    *' --device') compopt -o dirnames 2>/dev/null ;;
    *' --map') _tvb_files map "$3" ;;
    *' --vcd') _tvb_files vcd "$3" ;;
    *' --report') _tvb_files html "$3" ;;
    *' --scans' | *' --memory') _tvb_files txt "$3" ;;
    *' --fail-at' | *' --idcode' | *' --devices' | *' --clock' | *' --vcd-idle' | *' --pin-ns' | *' --longest-wait' | *' --require-idcode' | 'compile --chain') ;;
    *) return 1 ;;
  esac
}

_tvb_options() {
  case $1 in
    compile) echo '--map --chain --require-idcode --pause-as-idle --encoding --no-compress --no-seal --no-split --longest-wait --pin-ns --quiet -q --output -o' ;;
    decompile) echo '--force --output -o' ;;
    dump) echo '--json --hex' ;;
    check) echo '--strict' ;;
    seal) echo '--remove --force' ;;
    play) echo '--map --pause-as-idle --echo --chain --fail-at --vcd --vcd-idle --vcd-state --scans --memory --report --time --pin-ns --quiet -q' ;;
    download) echo '--device --idcode --log --map --json' ;;
    status) echo '--device' ;;
    probe) echo '--device --devices --log' ;;
    rewrite) echo '--longest-wait' ;;
    explain) echo '--clock --read --map' ;;
    '') echo '--version' ;;
  esac
  echo '--help -h'
}

_tvb() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local commands='compile decompile dump check seal play explain download status probe rewrite help' command=''
  COMPREPLY=()
  if ((COMP_CWORD > 1)); then
    command=${COMP_WORDS[1]}
  fi
  if [[ -n $command ]] && _tvb_value "$command" "$before" "$word"; then
    return
  fi
  if [[ $word == -* ]]; then
    _tvb_words "$(_tvb_options "$command")" "$word"
    return
  fi
  case $command in
    status | probe) ;;
    '' | help) _tvb_words "$commands" "$word" ;;
    compile) _tvb_files svf "$word" ;;
    play | explain | download)
      _tvb_files tvb "$word"
      _tvb_files svf "$word"
      ;;
    *) _tvb_files tvb "$word" ;;
  esac
}

complete -F _tvb tvb
