#!/usr/bin/env bash
# Usage: bench/fleet.sh BUILD_FOLDER [COUNT [LAID_OUT]]
#
# What "devicelab fleet" costs: devices a second over COUNT (10,000) made-up devices on two processors, processor time a
# device beside that of the bare program entered by chroot in a loop on LAID_OUT (1,000) copies of the same devices, and
# the most memory that a process has with a tenth of the devices and with all. Needs root, for the loop.
set -euo pipefail
build=$1 count=${2:-10000} laid_out=${3:-1000}
[ "$(id -u)" = 0 ] || { echo "bench fleet: the loop enters devices by chroot, which takes root" >&2; exit 1; }

folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
cd -- "$folder"

say() { printf '%s\n' "$*"; }
# The figure number $2 that file $1 ends with.
figure() { tail -n 1 "$1" | cut -d ' ' -f "$2"; }
calculate() { awk "BEGIN { printf \"%.${2:-2}f\", $1 }"; }

"$build/devicelab" new devices --count "$count" --seed 1 --archive >/dev/null
head -n $((count / 10)) devices/list.jsonl >devices/tenth.jsonl

fleet() {
  local status=0
  taskset -c 0,1 "$build/bench-usage" "$2" "$build/devicelab" fleet "@devices/$1" --from 8000 --jobs 2 --output "$2.records" \
    --fail-on none >/dev/null || status=$?
  [ $status = 0 ] || { echo "bench fleet: the fleet failed" >&2; exit 1; }
}
fleet tenth.jsonl tenth
fleet list.jsonl all

# The same devices as the loop wants them: each with everything in it, the libraries too.
mkdir base copies
ldd "$build/kelpwifiupdater" | grep -o '/[^ ]*' | while read -r library; do install -D "$library" "base$library"; done
install -D "$build/kelpwifiupdater" base/usr/sbin/kelpwifiupdater
number=0
head -n "$laid_out" devices/list.jsonl | while read -r line; do
  number=$((number + 1))
  copy=copies/$number
  cp -rl base "$copy"
  mkdir -p "$copy"/{dev,etc,tmp,var/lock,proc/sys/kernel}
  tar -C "$copy" -xf "devices/$(grep -o 'device-[0-9]*.tar' <<<"$line")"
  for entry in 0 1 2 3 4 5; do
    grep -o "kelp_mac_address$entry\":\"[0-9a-f]*" <<<"$line" | cut -d '"' -f 3 >"$copy/proc/sys/kernel/kelp_mac_address$entry"
  done
done
"$build/bench-usage" loop "$build/bench-fleet-loop" copies "$laid_out" /usr/sbin/kelpwifiupdater 8000

device=$(calculate "1000 * $(figure all 2) / $count")
bare=$(calculate "1000 * $(figure loop 2) / $laid_out")
say "devices a second, two processors:        $(calculate "$count / $(figure all 1)" 0)   ($count devices in $(figure all 1) s)"
say "processor time a device:                 $device ms"
say "the same of the bare program in a loop:  $bare ms   ($laid_out laid-out copies)"
say "ratio:                                   $(calculate "$device / $bare")"
say "most memory of a process, $((count / 10)) devices:  $(figure tenth 3) KiB"
say "most memory of a process, $count devices: $(figure all 3) KiB   (ratio $(calculate "$(figure all 3) / $(figure tenth 3)" 3))"
