#!/usr/bin/env bash
# Every command answers --help with its own usage, wherever it stands among the arguments, and does nothing else: it has
# nothing to do it with here.
set -euo pipefail
scripts=$(readlink -f -- "$(dirname -- "$0")/../../scripts")
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
mkdir "$folder/bin"
for tool in bash env dirname readlink realpath nproc awk; do ln -s "$(command -v "$tool")" "$folder/bin/"; done

status=0
for script in "$scripts"/*; do
  [ -x "$script" ] || continue
  name=scripts/${script##*/}
  for arguments in --help '10 --help'; do
    # shellcheck disable=SC2086  # one word each
    output=$(PATH=$folder/bin TMPDIR=$folder KELP_BUILD_DIR=$folder/build "$script" $arguments 2>&1) || {
      echo "$name $arguments fails: $output"
      status=1
    }
    [[ $output == "Usage: $name"* ]] || {
      echo "$name $arguments does not begin with its usage: $output"
      status=1
    }
  done
done
[ "$(find "$folder" -mindepth 1 -maxdepth 1)" = "$folder/bin" ] || {
  echo "something was left in the build folder or in the folder for temporary files"
  status=1
}
exit $status
