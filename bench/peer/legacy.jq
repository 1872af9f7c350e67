# The documents of the shell script, and the grammar and the vocabularies of the files that they are made from.

# The text of each file by its path; the input has them all, as the script joins them.
def files:
  [ ("\n" + .) | split("\n/")[1:][] | split("\n") | { key: ("/" + .[0]), value: (.[1:] | map(.[1:])) } ]
  | from_entries;

def unquoted: if length >= 2 and startswith("\"") and endswith("\"") then .[1:-1] else . end;

# The entry on a line as an object of one member; an empty object for a comment and for a line without "=".
def entry:
  if startswith("#") or startswith(";") then {}
  else split("=") | if length < 2 then {} else { (.[0]): (.[1:] | join("=") | unquoted) } end end;

# The entries of a file's lines. The first of a key counts.
def table: reduce ((. // [])[] | entry) as $entry ({}; $entry + .);

def number($default):
  ([ match("^[ \t\r\f]*([+-]?[0-9]+)").captures[0].string | ltrimstr("+") | tonumber
     | select(. >= -2147483648 and . <= 2147483647) ] | first) // $default;

def padded($width):
  if . < 0 then "-" + (-. | padded($width)) else tostring | ("0" * ($width - length) // "") + . end;

def word($words; $default): $words[.] // $default;

def level($default): word({ low: 0, medium: 1, high: 2 }; $default);

def security:
  word({ disabled: 0, OWE: 1, WEP: 2, PERSONAL_WPA: 3, PERSONAL_WPA2: 4, PERSONAL_WPA3: 5, PERSONAL_WPA_MIXED: 6,
         PERSONAL_WPA2_WPA3_MIXED: 7, ENTERPRISE_WPA: 8, ENTERPRISE_WPA2: 9, ENTERPRISE_WPA3: 10,
         ENTERPRISE_WPA_MIXED: 11 }; 4);

def countries:
  "AD AE AF AG AI AL AM AN AR AS AT AU AW AX AZ BA BB BD BE BF BG BH BL BM BN BO BR BS BT BY BZ CA CF CH CI CK CL "
  + "CM CN CO CR CW CX CY CZ DE DK DM DO DZ EC EE EG ES ET FI FK FM FO FR GB GD GE GF GG GH GI GL GP GR GT GU GY "
  + "HK HM HN HR HT HU ID IE IL IM IN IQ IS IT JE JM JO JP KE KH KN KR KW KY KZ LB LC LI LK LS LT LU LV MA MC MD "
  + "ME MF MH MK MM MN MO MP MQ MR MS MT MU MV MW MX MY NA NC NF NG NI NL NO NP NU NZ OM PA PE PF PG PH PK PL PM "
  + "PR PT PW PY QA RE RO RS RU RW SA SE SG SH SI SJ SK SM SN SR ST SV SX TC TD TF TG TH TN TR TT TW TZ UA UG UM "
  + "US UY UZ VA VC VE VG VI VN VU WF WS YE YT ZA ZW MaxCountryCode"
  | split(" ");

# Whether the mesh file's lines register a repeater.
def has_repeaters: (. // []) | join("\n") | try (fromjson.repeater_nodes | arrays | length > 0) catch false;

def global($files; $model; $role; $country; $swap):
  { logLevel: 2, defaultModel: ($model | ascii_upcase), backhaulSwapped: ($swap == "yes"),
    meshInfo: {
      connectedModels: (if $role == "re" or ($files["/usr/kelp/etc/mesh/mesh.conf"] | has_repeaters) then ["LOTUS"]
                        else [] end),
      isRepeater: ($role == "re") },
    countryCodeSetting: { countryCode: (if countries | index($country) then $country else "US" end) } };

def filter_table($files; $name): $files["/etc/hostapd/mac_filter/" + $name] | table;

# The enabled devices of a filter list, in file order; a section that comes again continues the earlier one.
def devices:
  reduce (. // [])[] as $line ({ order: [], sections: {}, name: null };
    if ($line | length >= 2 and startswith("[") and endswith("]")) then
      .name = $line[1:-1]
      | if .sections[.name] then . else .order += [.name] | .sections[.name] = {} end
    elif .name != null then .sections[.name] = ($line | entry) + .sections[.name]
    else . end)
  | [ .sections[.order[]] | select(.enable == "yes") | { name: (.desc // ""), mac: (.mac // "") } ];

def is_address: test("^[0-9A-Fa-f]{2}((:[0-9A-Fa-f]{2}){5}|(-[0-9A-Fa-f]{2}){5})$");

# One malformed address empties the list.
def profiles($files):
  (filter_table($files; "mf_guest.info").policy != "disabled") as $copies
  | [ ({ word: "Deny", policy: 1, file: "mf_deny.conf" }, { word: "Allow", policy: 0, file: "mf_allow.conf" })
      | ($files["/etc/hostapd/mac_filter/" + .file] | devices) as $devices | select($devices | length > 0)
      | { name: (("Primary Network", if $copies then "Guest Network" else empty end) + " - " + .word),
          policy: .policy, devices: $devices } ]
  | if all(.[].devices[]; .mac | is_address) then . else [] end
  | [ to_entries[] | { id: .key } + .value | .devices[].mac |= (ascii_downcase | gsub("-"; ":")) ];

def broadcast:
  (.broadcast_threshold // "" | number(null)) as $threshold
  | { devices: [], enabled: ($threshold != null and .broadcast_detect_enabled == "yes"),
      threshold: ($threshold // 100) };

def misc($files; $topology):
  { netTopology: $topology, broadcastDetect: (filter_table($files; "mf.setting") | broadcast),
    macFilterProfiles: profiles($files) };

# The tables of the radios' files, each with its radio; the first is that of all bands.
def points($files; $radios): [ $radios[] | { radio: .[0] } + ($files[.[1]] | { table: table }) ];

# One radio, from its file; $common is the file that decides transmit power and DFS.
def radio($radio; $common; $usb3):
  { frequency: $radio, channel: (.channel // "" | number(0)), channel2: (.channel2 // "" | number(0)),
    bandwidth:
      (if $radio == 1 and .force_24g_40mhz == "yes" then 1
       else .bandwidth // ""
         | word({ "20MHZ": 0, "20_40MHZ": 2, "20_40_80MHZ": 3, "20_40_80_160MHZ": 4, "80_80MHZ": 5 }; 2) end),
    mode: (.mode // "" | word({ n: 0, bgn: 1, ac: 4, "an+ac": 5 }; if $radio == 1 then 1 else 4 end)),
    txPower: ($common.tx_power // "" | level(2)), allowDFSChannels: ($common.allow_dfs_channels == "yes"),
    usb3Enabled: $usb3, thirdFlag: false, fourthFlag: true };

def radio_settings($files; $radios; $usb3):
  points($files; $radios) | .[0].table as $all
  | [ .[1:][] | .radio as $radio | .table
      | radio($radio; if $all.smartconnect_enabled == "yes" then $all else . end; $usb3) ];

def wps($files; $radios; $pin):
  points($files; $radios) | .[0].table as $all
  | ([ .[1:][] | select(.table.ap_enable_wps == "yes").radio ] | first) as $band
  | ($files["/usr/kelp/etc/wifi/wifi_wps"] | table) as $wps
  | (if $all.smartconnect_enabled == "yes" then { enabled: ($all.ap_enable_wps == "yes"), band: 0 }
     else { enabled: ($band != null), band: ($band // 0) } end)
  + { reserved: 0, pin_enabled: ($wps.is_wps_ap_pin_enabled == "yes"), pin: ($wps.wps_ap_pin // $pin) };

def no_rotation:
  { enable: false, date_type: 1, strength: 1, date: "2021-01-01 00:00", week_day: "0,1,2,3,4,5,6",
    notify_enable: false, mail_list: [] };

def rotation:
  def key($name): .["guest_pwd_rotate_" + $name] // "";
  (key("date") | split("/")) as $day
  | (if $day | length == 3 then $day | map(number(0)) else [2021, 1, 1] end) as [$year, $month, $date]
  | { enable: (key("enable") == "yes"), date_type: (key("date_type") | word({ "0": 1, "1": 0 }; 1)),
      strength: (key("strength") | level(1)),
      date: ("\($year | padded(4))-\($month | padded(2))-\($date | padded(2)) "
             + "\(key("hour") | number(0) | padded(2)):\(key("minute") | number(0) | padded(2))"),
      week_day: key("week_day"), notify_enable: (key("notify_enable") == "yes"),
      mail_list: (key("mail_list") | split(",")) };

# One network on one radio, from the radio's file.
def feature($guest; $radio; $profile):
  def key($name): .[if $guest and $name != "pmf_mode" then "guest_" + $name else $name end] // "";
  def flag($name): key($name) == "yes";
  { enabled: flag("enabled"), frequency: $radio, ssid: (key("ssid") | try @base64d catch ""),
    display_ssid: flag("display_ssid"), max_num_client: (key("max_num_client") | number(256)),
    restrict_guest_access: ($guest and key("allow_access_guest") == "no"),
    security: (key("security") | security), password: "",
    auth_server_ip: key("auth_server_ip"), auth_server_port: (key("auth_server_Port") | number(0)),
    schedule_enabled: flag("schedule_enabled"), schedule_kind: 1, schedule: key("schedule"),
    preset_number: 0, preset_flag: false, mac_filter_profile_id: $profile,
    guestPasswordRotation: (if $guest then rotation else no_rotation end),
    pmf_mode: (key("pmf_mode") | word({ disabled: 0, capable: 1, required: 2 }; 0)),
    ampdu: flag("ampdu"), uapsd_enable: flag("uapsd_enable"), ap_mumimo: flag("ap_mumimo"),
    ap_enable_11r: flag("ap_enable_11r"), ap_mcast_translating: flag("ap_mcast_translating"),
    country_abbrev_override_enable: flag("country_abbrev_override_enable"),
    ap_isolation: flag("ap_isolation"), preset_on: true, enable_ext_nss: flag("enable_ext_nss"),
    sc_disable_legacy_steering: flag("sc_disable_legacy_steering"),
    key_rotation: (key("key_rotation") | number(3600)), dtim: (key("dtim") | number(4)) };

# The number of the profile that a network's policy selects; the input is the profiles.
def profile_id($network; $policy):
  ({ deny: "\($network) - Deny", allow: "\($network) - Allow" }[$policy // ""]) as $wanted
  | [ .[] | select(.name == $wanted).id ] | first // -1;

def networks($files; $radios):
  points($files; $radios) as $points | profiles($files) as $profiles
  | [ { number: 0, name: "Primary Network", file: "mf.info", smart: "smartconnect_enabled" },
      { number: 1, name: "Guest Network", file: "mf_guest.info", smart: "smartconnect_guest_enabled" }
      | . as $network
      | ($profiles | profile_id($network.name; filter_table($files; $network.file).policy)) as $profile
      | [ $points[] | .radio as $radio | .table | feature($network.number == 1; $radio; $profile) ] as $features
      | { number: .number, name: .name, kind: .number, smartConnect: ($points[0].table[.smart] == "yes"),
          featureSettings: $features[1:] } + $features[0] ];
