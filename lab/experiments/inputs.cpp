#include "lab/experiments/inputs.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "lab/experiments/boot_variables.h"
#include "lab/experiments/json_members.h"
#include "lab/household/known_files.h"
#include "lab/images/secret_seal.h"
#include "lab/images/tree_lookup.h"
#include "lab/text/key_value.h"

namespace lab {
namespace {

/// Words that an entry of that key may have. They are tried in turn, so that more there are the better;
/// what they mean is the program's affair.
const std::map<std::string_view, std::vector<std::string>>& KnownWords() {
  static const std::map<std::string_view, std::vector<std::string>> kWords{
      {"security", {"disabled", "ENTERPRISE_WPA2", "PERSONAL_WPA3"}},
      {"pmf_mode", {"required", "disabled"}},
      {"mode", {"n", "an+ac"}},
      {"tx_power", {"low", "medium"}},
      {"bandwidth", {"20MHZ", "80_80MHZ"}},
      {"policy", {"deny", "allow", "disabled"}},
      {"ssid", {"Y2hhbmdlZA=="}},
      {"mac", {"02:00:00:00:00:01"}},
      {"pwd_rotate_date_type", {"0", "1"}},
      {"pwd_rotate_strength", {"low", "high"}},
      {"pwd_rotate_date", {"2022/3/4"}},
      {"pwd_rotate_mail_list", {"changed@example.net"}},
      {"kelpbios", {"orchid", "lotus"}},
      {"mesh_network_role", {"re", "ap"}},
      {"net_topology", {"bridge", "router"}},
      {"country_code", {"FR", "DE"}},
      {"role", {"re", "ap"}},
  };
  return kWords;
}

std::string_view WithoutGuest(std::string_view key) {
  constexpr std::string_view kGuest = "guest_";
  return key.starts_with(kGuest) ? key.substr(kGuest.size()) : key;
}

std::vector<std::string> OtherValues(const Tree& device, const LegacyEntry& entry) {
  const std::string_view key = WithoutGuest(entry.key);
  std::vector<std::string> values;
  if (const auto known = KnownWords().find(key); known != KnownWords().end()) {
    values = known->second;
  } else if (key == "password" || key == "auth_server_shared_secret") {
    const Entry* const secret_key = FindFile(device, kSecretKeyFile);
    try {
      if (secret_key != nullptr) values.push_back(SealSecret("changed", secret_key->content));
    } catch (const std::invalid_argument&) {  // no key; then nothing can be sealed with it
    }
  } else if (entry.value == "yes" || entry.value == "no") {
    values.emplace_back(entry.value == "yes" ? "no" : "yes");
  } else {
    values = {"yes", "no", "7", "8"};
  }
  std::erase(values, entry.value);
  return values;
}

void AddEntries(const Tree& device, const std::string& path, std::string_view text,
                const std::vector<LegacyEntry>& entries, std::vector<Input>& inputs) {
  for (const LegacyEntry& entry : entries) {
    const std::string name = entry.section.empty() ? entry.key : "[" + entry.section + "] " + entry.key;
    Input input{path, name, {{path, WithoutEntry(text, entry)}}};
    for (const std::string& value : OtherValues(device, entry)) {
      input.variations.push_back({path, WithValue(text, entry, value)});
    }
    inputs.push_back(std::move(input));
  }
}

void AddJson(const std::string& path, std::string_view text, std::vector<Input>& inputs) {
  for (JsonMember& member : JsonMembers(text)) {
    Input input{path, member.name, {}};
    for (std::string& other : member.others) input.variations.push_back({path, std::move(other)});
    inputs.push_back(std::move(input));
  }
}

void AddWhole(const std::string& path, const std::vector<std::string>& others, std::vector<Input>& inputs) {
  Input input{path, "", {{path, std::nullopt}}};
  for (const std::string& other : others) input.variations.push_back({path, other});
  inputs.push_back(std::move(input));
}

bool IsText(std::string_view bytes) {
  return bytes.find('\0') == std::string_view::npos;
}

/// What is no input: earlier documents, the archive, and what names the boot environment.
bool IsLeftOut(const std::string& path) {
  const std::string name = BaseName(path);
  if (path.starts_with(kArchiveFolder) || (path == kWifiFolder + name && IsDocumentName(name))) return true;
  return path == "/etc/fw_env.config" || path.starts_with("/var/lock/");
}

}  // namespace

std::vector<Input> InputsOf(const Tree& device) {
  std::vector<Input> inputs;
  for (const auto& [path, entry] : device) {
    if (entry.kind != Entry::Kind::File || IsLeftOut(path) || !IsText(entry.content)) continue;
    const std::string& text = entry.content;
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    if (path.starts_with("/proc/")) {
      AddWhole(path, {"0200000000" + path.substr(path.size() - 1) + "f\n"}, inputs);
    } else if (path == kSecretKeyFile) {
      AddWhole(path, {std::string(64, '0') + "\n"}, inputs);
    } else if (start != std::string::npos && text[start] == '{') {
      AddJson(path, text, inputs);
    } else if (path.ends_with(".conf") && path.starts_with(kFilterFolder)) {
      AddEntries(device, path, text, ParseSectionText(text), inputs);
    } else {
      AddEntries(device, path, text, ParseKeyValueText(text), inputs);
    }
  }
  for (Input& input : BootVariableInputs(device)) inputs.push_back(std::move(input));
  return inputs;
}

}  // namespace lab
