#!/bin/dash
# The migration as a first-boot script: dash, sed and jq, each legacy file read once, all documents from one call of jq.
# What the program is measured against; complete for everything but the secrets, which no tool of a shell opens and which
# come out empty.
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

# One call of jq: its documents stand between numbered lines and are written beside their places. What else the script
# needs to know comes back: whether there is a mesh, and that jq came to its end. The dollars of the program are jq's.
# shellcheck disable=SC2016
answer=$(jq -n --tab -r -L "$here" --arg inputs "$inputs" --arg model "$model" --arg role "${role-}" \
  --arg country "${country-}" --arg swap "${swap-}" --arg topology $topology --arg pin "${pin-}" --argjson usb3 $usb3 \
  --arg all "$all" --arg first "$first" --arg second "$second" --arg third "$third" '
  include "legacy";
  ($inputs | files) as $files
  | global($files; $model; $role; $country; $swap) as $global
  | (if $model == "orchid" and $global.meshInfo.connectedModels == [] then [[0, $all], [1, $first], [2, $second]]
     else [[0, $all], [1, $first], [3, $second], [4, $third]] end) as $radios
  | 1, $global, 2, misc($files; $topology), 3, radio_settings($files; $radios; $usb3), 4, wps($files; $radios; $pin),
    5, networks($files; $radios), 6' |
  sed -n "/^1\$/,/^2\$/{/^[1-6]\$/!w $wifi/global.json.new
}
/^2\$/,/^3\$/{/^[1-6]\$/!w $wifi/misc.json.new
}
/^3\$/,/^4\$/{/^[1-6]\$/!w $wifi/radio.json.new
}
/^4\$/,/^5\$/{/^[1-6]\$/!w $wifi/wps.json.new
}
/^5\$/,/^6\$/{/^[1-6]\$/!w $wifi/network.json.$topology.new
}
/^\t\t\"connectedModels\": \[\]/p;/^6\$/p")

used="$all $first $second"
case $model/$answer in
  *6) ;;
  *) echo 'jq failed' >&2; exit 1 ;;
esac
case $model/$answer in
  orchid/*'[]'*) ;;
  *) used="$used $third" ;;
esac

# publish NAME...: in their places, all or nothing each.
publish() {
  for name; do mv "$wifi/$name.new" "$wifi/$name"; done
}

if [ -z "${pin+set}" ]; then
  sync $wifi/global.json.new
  publish global.json
  echo 'no key wps_pin' >&2
  exit 1
fi
sync $wifi/global.json.new $wifi/misc.json.new $wifi/radio.json.new $wifi/wps.json.new $wifi/network.json.$topology.new
publish global.json misc.json radio.json wps.json network.json.$topology

[ -d $wifi/legacy ] || mkdir -m 755 $wifi/legacy
sync $wifi # before the first legacy file moves
# The paths hold neither blanks nor patterns.
# shellcheck disable=SC2086
mv $filter/mf.info $filter/mf.setting $filter/mf_guest.info $wifi/lbd.conf $wifi/lbd.guest.conf $used \
  $wifi/wifi_nvram $wifi/wifi_wps $wifi/legacy/
