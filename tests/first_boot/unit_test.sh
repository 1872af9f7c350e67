#!/usr/bin/env bash
# systemd takes the unit without a word, and keeps it as narrow as it is, where this machine has what can tell.
set -euo pipefail
files=$1
command -v systemd-analyze >/dev/null || {
  echo "no systemd-analyze here"
  exit 77
}
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
units=$folder/usr/lib/systemd/system
mkdir -p "$units" "$folder/usr/libexec"
install -m 755 "$files/kelp-first-boot" "$folder/usr/libexec/"
for target in sysinit basic network-pre multi-user shutdown; do printf '[Unit]\n' >"$units/$target.target"; done

verify() { systemd-analyze --root="$folder" --man=no verify kelp-first-boot.service 2>&1; }

cp -- "$files/kelp-first-boot.service" "$units/"
said=$(verify) || said="status $?: $said"
[ -z "$said" ] || {
  echo "not clean: $said"
  exit 1
}
# It is this unit that was looked at, and its program.
rm "$folder/usr/libexec/kelp-first-boot"
said=$(verify) || :
[ -n "$said" ] || {
  echo "a unit without its program was taken, too"
  exit 1
}

# The program renames files from /etc/hostapd to below /usr/kelp/etc, which the mounts that the unit makes must not part.
unit=$files/kelp-first-boot.service
mounts=$(sed -nE 's/^(ReadWritePaths|ReadOnlyPaths|InaccessiblePaths|BindPaths|BindReadOnlyPaths|TemporaryFileSystem)=//p' \
  "$unit" | tr ' ' '\n' | sed 's/^[-+]*//; s/:.*//')
case $(sed -n 's/^ProtectSystem=//p' "$unit") in
  full) mounts="/usr /etc $mounts" ;;
  strict) mounts="/ $mounts" ;;
  '' | no | false) ;;
  *) mounts="/usr $mounts" ;;
esac
if [ "$(id -u)" -eq 0 ] && ! unshare --mount true 2>/dev/null; then
  echo "takes mounts, which this container does not let a process make"
  exit 77
fi
[ "$(id -u)" -eq 0 ] && enter=(unshare --mount) || enter=(unshare --map-root-user --mount)
device=$folder/device
mkdir -p "$device/etc/hostapd/mac_filter" "$device/usr/kelp/etc/wifi/legacy" "$device/var/lock"
: >"$device/etc/hostapd/mac_filter/mf.info"
# A second name is refused where a rename would be, and mv is not: it copies.
# shellcheck disable=SC2016,SC2086  # the inner shell expands it; words of their own
"${enter[@]}" sh -euc '
  device=$1
  shift
  for path in "$@"; do [ ! -d "$device$path" ] || mount --bind "$device$path" "$device$path"; done
  ln -- "$device/etc/hostapd/mac_filter/mf.info" "$device/usr/kelp/etc/wifi/legacy/"' sh "$device" $mounts || {
  echo "with the mounts that the unit makes no file can be moved into the archive"
  exit 1
}
exposure=$(systemd-analyze --root="$folder" --offline=true security kelp-first-boot.service |
  sed -n 's/.*exposure level for .*: \([0-9.]*\) .*/\1/p')
awk -v exposure="$exposure" 'BEGIN { exit !(exposure ~ /^[0-9.]+$/ && exposure < 2) }' || {
  echo "the sandbox has become wide: exposure $exposure"
  exit 1
}
