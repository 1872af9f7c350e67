#include "lab/household/message_kinds.h"

#include <algorithm>

namespace lab {

const std::vector<MessageKind>& MessageKinds() {
  static const std::vector<MessageKind> kKinds{
      {120, "update nothing from %d.", "The build that was installed before is new enough (9225 or above).",
       "None: the household keeps its settings as they are.", "Nothing to do."},
      {140, "Failed to get mesh role, error: %s",
       "The information store's mesh_network_role or the mesh file (/usr/kelp/etc/mesh/mesh.conf) cannot be "
       "read.",
       "The device counts as standing alone; the nodes of a mesh lose their router. None from build 8228 on.",
       "Restore the mesh file, or set the mesh up anew."},
      {168, "Failed to get network context: %s",
       "The information store's net_topology cannot be read, or is neither router nor bridge.",
       "The device counts as a router; one that was a bridge now opens a network of its own.",
       "Set the topology on the device; correct net_topology before an upgrade is repeated."},
      {225, "New config is existed, so stop migrating.",
       "global.json or misc.json is there already, from an earlier run or from the daemon.",
       "None where that run had finished. Where it had broken off, the household stays without the documents "
       "that are missing.",
       "Look which of the five documents are there; where some are missing, use kelp-migrate-again."},
      {229, "Start to migrate config from 1.2.5 to 1.3", "The migration of a whole household has begun.",
       "None.", "Nothing to do."},
      {280, "Failed to country code, use US to instead. error: %s",
       "The information store's country_code cannot be read or is not a known code.",
       "The radios follow the rules of the US: other channels and powers than are lawful at home; devices on "
       "channels 12 and 13 fall off.",
       "Set the country on the device."},
      {300, "Failed to get backhaul swap, default false: %s",
       "The information store's mesh_swap_backhaul_band cannot be read.",
       "A mesh whose backhaul was swapped to the other 5 GHz band may lose its nodes.",
       "Set the backhaul band anew."},
      {524, "Failed to allocate memory", "The device had no memory left while a filter list was read.",
       "The list counts as empty: what it refused is admitted, what it admitted is refused.",
       "Restart the device and enter the filter anew."},
      {530, "Failed to enum section from %s", "A filter list is there but cannot be read.",
       "The list counts as empty: what it refused is admitted, what it admitted is refused.",
       "Enter the filter anew."},
      {575, "Failed to decode base64 string: %s", "A stored SSID is no base64 text.",
       "The network has no name; no device finds it.", "Enter the SSID anew."},
      {589, "Failed to decrypt ssid with %s",
       "A stored password or shared secret cannot be opened: it is missing, damaged, unsealed, or sealed "
       "with "
       "another key.",
       "The network has no password; with a security that needs one nothing connects. Without effect on an "
       "open "
       "network.",
       "Enter the password anew; where all are lost, look at the secret key."},
      {760, "Invalid security mode: %s, select wpa2.",
       "A stored security word is not known, or there is none.",
       "The network uses WPA2: devices that cannot do it fall off, and a stronger protection is weaker now.",
       "Choose the security anew."},
      {776, "Invalid pmf mode: %s, select disabled.",
       "A stored word for protected management frames is not known, or there is none.",
       "Protected frames are off: devices can be thrown off the network from outside; WPA3 does not work.",
       "Choose the setting anew."},
      {795, "Invalid wireless mode: %s.", "A stored wireless mode is not known, or there is none.",
       "The radio uses bgn at 2.4 GHz and ac at 5 GHz; devices of another standard fall off.",
       "Choose the mode anew."},
      {811, "Invalid tx power: %s, select high.", "A stored transmit power is not known, or there is none.",
       "The radio transmits at high power.", "Choose the power anew."},
      {838, "Invalid bandwidth: %s, select 20_40.",
       "A stored channel bandwidth is not known, or there is none.",
       "The radio uses 20/40 MHz; a 5 GHz radio is slower than before.", "Choose the bandwidth anew."},
      {855, "Invalid mode: %s, select regular.",
       "A stored mode of the guest password's schedule is not known, or there is none.",
       "The guest password follows the regular schedule. None where the rotation is off.",
       "Choose the schedule anew."},
      {869, "Invalid value: %s, select medium.",
       "A stored strength of the guest password is not known, or there is none.",
       "New guest passwords have medium strength. None where the rotation is off.",
       "Choose the strength anew."},
      {896, "Failed to call KELPUSBGetUSB3DisableUbootEnv", "The boot environment cannot be read.",
       "USB 3 counts as on; where it was off because it disturbs 2.4 GHz, that radio gets worse.",
       "Restore the boot environment and its /etc/fw_env.config, then switch USB 3 off again."},
      {920, "Failed to split string: %s", "The device had no memory left while a text was cut into fields.",
       "The list of mail addresses, or the date of the guest password's schedule, is lost.",
       "Restart the device and enter the schedule anew."},
      {954, "Failed to update config, error: %s, buildNumber: %s",
       "The update stopped, for the reason given.",
       "By the reason: settings files are missing, or only the archive is not done, or nothing was due. A "
       "report of the device says which.",
       "The reason tells what to mend; then use kelp-migrate-again."},
  };
  return kKinds;
}

const MessageKind* FindMessageKind(int number) {
  const auto& kinds = MessageKinds();
  const auto found = std::ranges::find(kinds, number, &MessageKind::number);
  return found == kinds.end() ? nullptr : &*found;
}

std::string MessageArgument(const MessageKind& kind, std::string_view text) {
  constexpr std::string_view kPlace = "%s";
  const std::size_t place = kind.format.find(kPlace);
  if (place == std::string_view::npos || !text.starts_with(kind.format.substr(0, place))) return "";
  const std::string_view behind = kind.format.substr(place + kPlace.size());
  const std::string_view separator = behind.substr(0, behind.find('%'));
  const std::string_view argument = text.substr(place);
  // What the program was given may itself hold the words behind it, so the last ones count.
  const std::size_t end = separator.empty() ? argument.size() : argument.rfind(separator);
  return std::string(argument.substr(0, end));
}

}  // namespace lab
