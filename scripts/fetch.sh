# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#
# What the scripts that fetch packages of other releases share. Nothing is installed: apt fetches
# and verifies the packages under a configuration of its own, and they are only unpacked. Sourced,
# after lib.sh, not run.

keyring=/usr/share/keyrings/debian-archive-keyring.gpg
for tool in apt-get dpkg dpkg-deb modinfo flock patchelf; do
  command -v "$tool" >/dev/null || die "$tool is missing (make setup GROUPS=modules installs it)"
done
build_arch=$(dpkg --print-architecture)

# begin OUTDIR WHAT: sets `out` and `part`, the folder that becomes OUTDIR in finish(). Ends the
# script where OUTDIR is there and was made of WHAT by these very scripts, at this very place. A new
# one is made beside it, so a run that is cut off leaves nothing that looks finished.
begin() {
  mkdir -p "$(dirname "$1")"
  out=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
  part=$out.part
  stamp="$(cat "$0" "$here/fetch.sh" | sha256sum | cut -c1-64) $out $2"
  ! is_complete || exit 0
  # One run at a time; whoever waited finds the work done.
  exec 9>"$out.lock"
  flock 9
  ! is_complete || exit 0
  [ -r "$keyring" ] || die "$keyring is missing (make setup GROUPS=modules installs it)"
  rm -rf "$part"
  mkdir -p "$part/root" "$part/debs"
}

is_complete() {
  [ "$(cat "$out/stamp" 2>/dev/null)" = "$stamp" ]
}

# Prints the archive's address: that of the mirror which this machine's apt uses already.
mirror() {
  apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Label: Debian' | head -n1
}

# private_apt ARCH SUITE...: sets up an apt of its own below $part/apt, for a machine of that
# architecture; packages of this machine's own can be had as well.
private_apt() {
  local apt=$part/apt arch=$1 site
  shift
  site=$(mirror)
  if [ -z "$site" ]; then
    as_root apt-get update -qq
    site=$(mirror)
  fi
  [ -n "$site" ] || die "apt on this machine has no Debian mirror among its sources"
  mkdir -p "$apt"/{state/lists/partial,cache/archives/partial,preferences.d}
  : >"$apt/status"
  printf "deb [signed-by=$keyring] $site %s main\n" "$@" | sort -u >"$apt/sources.list"
  apt_options=(-o "Dir::State=$apt/state" -o "Dir::State::status=$apt/status"
    -o "Dir::Cache=$apt/cache" -o "Dir::Etc::sourcelist=$apt/sources.list"
    -o Dir::Etc::sourceparts=/dev/null -o "Dir::Etc::preferencesparts=$apt/preferences.d"
    -o "APT::Architecture=$arch"
    -o "APT::Architectures::=$arch" -o "APT::Architectures::=$build_arch"
    -o Acquire::Languages=none -o "APT::Sandbox::User=$(id -un)")
  apt-get "${apt_options[@]}" update -qq
}

# fetch PACKAGE[:ARCH][=VERSION]...: downloads the packages, verified by apt.
fetch() {
  (cd "$part/debs" && apt-get "${apt_options[@]}" download -qq "$@")
}

# fetch_all PACKAGE...: the same with all that they depend on.
fetch_all() {
  apt-get "${apt_options[@]}" install -qq -y --no-install-recommends --download-only "$@" >/dev/null
  mv "$part"/apt/cache/archives/*.deb "$part/debs/"
}

# Unpacks what has been downloaded into $part/root.
unpack() {
  local deb
  for deb in "$part"/debs/*.deb; do
    dpkg-deb -x "$deb" "$part/root"
  done
}

# adopt FOLDER ROOT: makes the programs below FOLDER run with the C library that is unpacked, or is
# going to be, in ROOT. A program finds its library by two names that are written into it.
adopt() {
  local lib=$2/usr/lib/$(gcc -print-multiarch) file loader
  find "$1" -type f -perm -u+x | while IFS= read -r file; do
    if loader=$(patchelf --print-interpreter "$file" 2>/dev/null); then
      patchelf --set-interpreter "$lib/${loader##*/}" --force-rpath --set-rpath "$lib" "$file"
    fi
  done
}

# The work is done: it takes its name.
finish() {
  rm -rf "$part/apt" "$part/debs"
  echo "$stamp" >"$part/stamp"
  rm -rf "$out"
  mv "$part" "$out"
}
