#!/usr/bin/env bash
# Usage: killed_sweep_test.sh FAULTSWEEP DEVICE
#
# A sweep that is killed in the middle leaves nothing of its devices in the folder for temporary files.
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
mkdir "$folder/tmp"
TMPDIR=$folder/tmp "$1" "$2" --from 8000 >"$folder/said" 2>&1 &
sweep=$!
for _ in $(seq 200); do
  ! pgrep -P "$sweep" >/dev/null || break
  sleep 0.05
done
pgrep -P "$sweep" >/dev/null || { echo "the sweep runs nothing:"; cat "$folder/said"; exit 1; }
kill -KILL "$sweep"
wait "$sweep" 2>/dev/null || true
# In a container that forbids mounts another process clears up.
for _ in $(seq 200); do
  left=$(ls -A "$folder/tmp")
  [ -n "$left" ] || break
  sleep 0.05
done
[ -z "$left" ] || { echo "the sweep left $left"; exit 1; }
