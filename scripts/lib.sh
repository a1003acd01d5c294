# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# What the scripts of this folder share. Sourced, not run.

say() {
  printf '%s\n' "$*"
}

# die TEXT: the script's name and TEXT on standard error, and the end of the script.
die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

can_be_root() {
  [ "$(id -u)" = 0 ] || command -v sudo >/dev/null
}

# as_root COMMAND...: runs COMMAND as root, directly or by sudo; fails where neither can be.
as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo -- "$@"
  else
    die "'$*' has to be run as root, and there is no sudo here"
  fi
}
