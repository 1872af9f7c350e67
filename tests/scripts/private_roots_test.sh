#!/usr/bin/env bash
# On a machine that forbids private roots, the commands that need them say so before they set up or build anything.
set -euo pipefail
scripts=$(readlink -f -- "$(dirname -- "$0")/../../scripts")
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
mkdir "$folder/bin"
for tool in bash env dirname readlink realpath nproc awk cat basename; do ln -s "$(command -v "$tool")" "$folder/bin/"; done
printf '#!/bin/sh\nexit 1\n' >"$folder/bin/unshare"
# shellcheck disable=SC2016  # that shell expands it
printf '#!/bin/sh\necho "${KELP_TEST_USER}"\n' >"$folder/bin/id"
chmod +x "$folder/bin/unshare" "$folder/bin/id"

status=0
for user in 0 1000; do
  for command in demo test test-sanitized 'fuzz 1'; do
    # shellcheck disable=SC2086  # one word each
    if output=$(KELP_TEST_USER=$user PATH=$folder/bin TMPDIR=$folder KELP_BUILD_DIR=$folder/build \
      "$scripts"/$command 2>&1); then
      echo "scripts/$command succeeds"
      status=1
    fi
    expected='root of this container or sandbox may make no private roots'
    [ "$command" != test-sanitized ] || expected='root of this container or sandbox may mount nothing'
    [ "$user" = 0 ] || expected='ordinary users may make no private roots on this machine: run this as root'
    [[ $output == *": $expected"* && $output != *setup:* ]] || {
      echo "scripts/$command says: $output"
      status=1
    }
  done
done
# Root that may enter another root folder gets further.
ln -s /bin/true "$folder/bin/chroot"
output=$(KELP_TEST_USER=0 PATH=$folder/bin TMPDIR=$folder KELP_BUILD_DIR=$folder/build "$scripts/demo" 2>&1) || true
[[ $output == *setup:* ]] || {
  echo "scripts/demo of a container's root says: $output"
  status=1
}
[ ! -e "$folder/build" ] || {
  echo "something was built"
  status=1
}
exit $status
