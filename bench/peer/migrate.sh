#!/bin/dash
# The migration as a first-boot script: dash, sed and jq, each legacy file read once, one jq call a document. What the
# program is measured against; complete for everything but the secrets, which no tool of a shell opens and which come
# out empty.
set -eu
umask 077
export LC_ALL=C

wifi=/usr/kelp/etc/wifi
filter=/etc/hostapd/mac_filter
here=${0%/*}

if [ -e $wifi/global.json ] || [ -e $wifi/misc.json ]; then exit 0; fi

# Of two entries with one key the first counts.
while IFS= read -r line || [ -n "$line" ]; do
  value=${line#*=}
  case $value in \"*\") value=${value#\"} value=${value%\"} ;; esac
  case $line in
    kelpbios=*) : "${model=$value}" ;;
    mesh_network_role=*) : "${role=$value}" ;;
    net_topology=*) : "${topology=$value}" ;;
    country_code=*) : "${country=$value}" ;;
    mesh_swap_backhaul_band=*) : "${swap=$value}" ;;
    wps_pin=*) : "${pin=$value}" ;;
  esac
done </usr/kelp/etc/info.conf

case ${model?} in
  orchid | lotus | maple | cedar) ;;
  *) echo "Invalid kelpbios value: $model" >&2; exit 1 ;;
esac
case ${role-}/${topology-} in
  re/*) topology=repeater ;;
  */bridge) topology=bridge ;;
  *) topology=default ;;
esac

# The kernel has the addresses of all radios without colons. The first model lacks the second 5 GHz radio.
entry=/proc/sys/kernel/kelp_mac_address
if [ "$model" = orchid ]; then
  # shellcheck disable=SC2046
  set -- $(sed 's/..\B/&:/g' ${entry}4 ${entry}5) 11:11:11:11:11:11
else
  # shellcheck disable=SC2046
  set -- $(sed 's/..\B/&:/g' ${entry}3 ${entry}4 ${entry}5)
fi
[ $# = 3 ] || { echo 'Failed to get bssid from kelp_mac_address' >&2; exit 1; }
all=$wifi/wifi_ap_00:00:00:00:00:00
first=$wifi/wifi_ap_$1
second=$wifi/wifi_ap_$2
third=$wifi/wifi_ap_$3

usb3=true
if disabled=$(fw_printenv -n usb3_disable 2>/dev/null); then
  case $disabled in '' | 0) ;; *) usb3=false ;; esac
fi

# All files in one text: a line with the path of each, and a blank before each of its own lines.
inputs=$(sed -s '1F; s/^/ /' "$all" "$first" "$second" "$third" $wifi/wifi_wps /usr/kelp/etc/mesh/mesh.conf \
  $filter/mf.info $filter/mf_guest.info $filter/mf.setting $filter/mf_deny.conf $filter/mf_allow.conf 2>/dev/null) ||
  true # some need not be there

document() { jq -n --tab -L "$here" --arg inputs "$inputs" "$@"; }

# save NAME TEXT: all or nothing.
save() {
  printf '%s\n' "$2" >"$wifi/$1.new"
  sync "$wifi/$1.new"
  mv "$wifi/$1.new" "$wifi/$1"
}

# The dollars of the programs below are jq's.
# shellcheck disable=SC2016
global=$(document --arg model "$model" --arg role "${role-}" --arg country "${country-}" --arg swap "${swap-}" '
  include "legacy"; global($inputs | files; $model; $role; $country; $swap)')
save global.json "$global"

used="$all $first $second"
radios="[0, \"$all\"], [1, \"$first\"], [2, \"$second\"]"
case $model/$global in
  orchid/*'"connectedModels": []'*) ;;
  *)
    used="$used $third"
    radios="[0, \"$all\"], [1, \"$first\"], [3, \"$second\"], [4, \"$third\"]"
    ;;
esac

# shellcheck disable=SC2016
text=$(document --arg topology $topology 'include "legacy"; misc($inputs | files; $topology)')
save misc.json "$text"
# shellcheck disable=SC2016
text=$(document --argjson radios "[$radios]" --argjson usb3 $usb3 '
  include "legacy"; radio_settings($inputs | files; $radios; $usb3)')
save radio.json "$text"
# shellcheck disable=SC2016
text=$(document --argjson radios "[$radios]" --arg pin "${pin?}" 'include "legacy"; wps($inputs | files; $radios; $pin)')
save wps.json "$text"
# shellcheck disable=SC2016
text=$(document --argjson radios "[$radios]" 'include "legacy"; networks($inputs | files; $radios)')
save network.json.$topology "$text"

[ -d $wifi/legacy ] || mkdir -m 755 $wifi/legacy
sync $wifi # every document is on the disk before the first file moves
# The paths hold neither blanks nor patterns.
# shellcheck disable=SC2086
mv $filter/mf.info $filter/mf.setting $filter/mf_guest.info $wifi/lbd.conf $wifi/lbd.guest.conf $used \
  $wifi/wifi_nvram $wifi/wifi_wps $wifi/legacy/
