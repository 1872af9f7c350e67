#!/usr/bin/env bash
# Usage: bench/count_instructions.sh EMULATOR LIBRARIES PROGRAM DEVICE BUILD
#
# Has the emulator (qemu of a machine, linked statically) migrate a copy of the sample device in DEVICE from build number
# BUILD, and prints what came of it: exit status, documents, files in the archive, and how many instructions the program
# took, its loader included. LIBRARIES is a folder with the machine's usr/lib. Nobody listens at the device's /dev/log.
set -euo pipefail
[ $# -eq 5 ] || { echo "usage: ${0##*/} EMULATOR LIBRARIES PROGRAM DEVICE BUILD" >&2; exit 2; }

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(--user --map-root-user)
place=$(mktemp -d)
trap 'rmdir -- "$place"' EXIT

# The device stands in a file system of its own, which ends with the namespace. An instruction is a block of its own
# (-singlestep), and for each block that is executed the emulator puts a line on standard error.
# shellcheck disable=SC2016  # the inner shell expands it
count='
  set -eu
  emulator=$2 libraries=$3 program=$4 device=$5 build=$6
  mount -t tmpfs tmpfs "$1"
  cp -r -- "$device/." "$1"
  cd -- "$1"
  mkdir -p dev usr/sbin
  cp -- "$emulator" emulator
  cp -- "$program" usr/sbin/kelpwifiupdater
  for folder in lib lib64; do
    [ -d "$libraries/usr/$folder" ] || continue
    mkdir -p "usr/$folder"
    mount --bind "$libraries/usr/$folder" "usr/$folder"
    ln -s "usr/$folder" "$folder"
  done
  : >dev/null
  mount --bind /dev/null dev/null
  set +e; { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot . /emulator -singlestep -d nochain,exec /usr/sbin/kelpwifiupdater --update-config "$build" 2>&1 >/dev/null
    echo "$?" >status; } | grep -c "^Trace" >executed || :
  cd usr/kelp/etc/wifi
  documents=$(find . -maxdepth 1 -name "*.json*" | wc -l)
  archived=$(find . -path "./legacy/*" -type f | wc -l)
  printf "%s %s %s %s\n" "$(cat "$OLDPWD/status")" "$documents" "$archived" "$(cat "$OLDPWD/executed")"
'
unshare "${as_root[@]}" --mount sh -c "$count" sh "$place" "${@:1:5}"
