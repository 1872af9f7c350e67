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

# Tests and sweeps lay out devices by the thousand: in memory where that is possible.
keep_devices_in_memory() { [ ! -w /dev/shm ] || export TMPDIR=${TMPDIR:-/dev/shm}; }

# A line for each kernel setting that forbids user namespaces to ordinary users here.
forbidding_settings() {
  local name forbidding wanted value
  while read -r name forbidding wanted; do
    value=$(cat "/proc/sys/${name//.//}" 2>/dev/null) || continue
    [ "$value" != "$forbidding" ] || printf '\n  sysctl -w %s=%s' "$name" "$wanted"
  done <<'SETTINGS'
user.max_user_namespaces 0 15000
kernel.unprivileged_userns_clone 0 1
kernel.apparmor_restrict_unprivileged_userns 1 0
SETTINGS
}

# Private roots take namespaces. Asked before anything is set up or built for nothing.
require_private_roots() {
  local settings
  if [ "$(id -u)" -eq 0 ]; then
    unshare --mount --propagation unchanged true 2>/dev/null ||
      fail "root of this container or sandbox may make no private roots: it lacks the capability SYS_ADMIN" \
        "(docker, podman: --cap-add SYS_ADMIN)"
  elif ! unshare --user --map-root-user --mount true 2>/dev/null; then
    settings=$(forbidding_settings)
    fail "ordinary users may make no private roots on this machine: run this as root${settings:+, or allow it:$settings}"
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
