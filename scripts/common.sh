# shellcheck shell=bash
# What the commands of this folder share. Sourced, never run.

root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." >/dev/null && pwd)
# Used by the scripts that source this file.
# shellcheck disable=SC2034
jobs=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}

say() { printf '%s: %s\n' "${0##*/}" "$*"; }

fail() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# Every command answers --help with the head of its own file, before it does anything.
usage() { awk 'NR > 1 { if (!/^#/) exit; sub(/^# ?/, ""); print }' "$0"; }
for argument in "$@"; do
  [ "$argument" != --help ] || { usage && exit 0; }
done
unset argument

# Every preset has a folder of its own: build, build-debug and so on, or the same beside KELP_BUILD_DIR
# where the checkout cannot be written or should stay clean.
KELP_BUILD_DIR=$(realpath -m -- "${KELP_BUILD_DIR:-$root/build}")
export KELP_BUILD_DIR
build_folder() {
  case $1 in
    release) printf '%s\n' "$KELP_BUILD_DIR" ;;
    *) printf '%s\n' "$KELP_BUILD_DIR-$1" ;;
  esac
}

# Tests and sweeps lay out devices by the thousand: in memory where that is possible. In a container that lets no process
# mount, the programs go there as well, which /dev/shm has no room for and mostly lets none run.
keep_devices_in_memory() {
  if [ "$(id -u)" -eq 0 ] && ! may_mount; then return; fi
  [ ! -w /dev/shm ] || export TMPDIR=${TMPDIR:-/dev/shm}
}

# A fresh checkout: FROM TO.
copy_checkout() { tar -C "$1" --exclude=./.git --exclude='./build*' -cf - . | tar -C "$2" --no-same-owner -xf -; }

# What root of a container is left with by default: the capabilities, and how it finds the folders below $1.
# shellcheck disable=SC2034  # used by the scripts that source this file
container_capabilities=-all,+chown,+dac_override,+fowner,+fsetid,+kill,+setgid,+setuid,+setpcap,+net_bind_service
container_capabilities+=,+net_raw,+sys_chroot,+mknod,+audit_write,+setfcap
become_container() {
  mount -t tmpfs -o size=64m,noexec,nosuid,nodev,mode=1777 tmpfs "$1/dev/shm"
  mount --bind "$1/proc/sys" "$1/proc/sys"
  mount -o remount,bind,ro "$1/proc/sys"
}

may_mount() { unshare --mount --propagation unchanged true 2>/dev/null; }

# What an ordinary user can do about namespaces that are refused, by what it is that is refused.
remedy() {
  local name forbidding wanted
  while read -r name forbidding wanted; do
    [ "$(cat "/proc/sys/${name//.//}" 2>/dev/null)" = "$forbidding" ] || continue
    printf ', or, as root: sysctl -w %s=%s' "$name" "$wanted"
    return
  done
}

# For commands that do not go without mounts.
require_mounts() {
  [ "$(id -u)" -ne 0 ] || may_mount ||
    fail "root of this container or sandbox may mount nothing, which this command takes: it lacks the capability SYS_ADMIN" \
      "(docker, podman: --cap-add SYS_ADMIN)"
  require_private_roots
}

# Private roots take namespaces; root does with less. Asked before anything is set up or built for nothing.
require_private_roots() {
  if [ "$(id -u)" -eq 0 ]; then
    may_mount && return
    chroot / true 2>/dev/null ||
      fail "root of this container or sandbox may make no private roots: it lacks even the capability SYS_CHROOT" \
        "(docker, podman: --cap-add SYS_CHROOT)"
  elif ! unshare --user --map-root-user --mount true 2>/dev/null; then
    if unshare --user true 2>/dev/null; then
      fail "ordinary users may make user namespaces on this machine, but get no capabilities in them: run this as" \
        "root (sudo)$(remedy <<<'kernel.apparmor_restrict_unprivileged_userns 1 0')"
    fi
    fail "ordinary users may make no private roots on this machine: run this as root (sudo)$(
      remedy <<<$'user.max_user_namespaces 0 15000\nkernel.unprivileged_userns_clone 0 1'
    )"
  fi
}

# From here on the folder that a command was given in, which may be one that this user cannot even read, no
# longer matters.
cd -- "$root" || exit 1

# The sources in the given folders, as far as there are such, each name ended by a NUL.
source_files() {
  local folder present=()
  for folder in "$@"; do
    [ ! -d "$folder" ] || present+=("$folder")
  done
  [ ${#present[@]} -eq 0 ] ||
    find "${present[@]}" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \) -print0 | sort -z
}
