#include "lab/reports/household_text.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lab/household/schemas.h"
#include "lab/text/utf8.h"

namespace lab {
namespace {

constexpr std::size_t kWidth = 118;
constexpr std::size_t kLongestText = 400;
constexpr std::size_t kMostPlaces = 5;
constexpr std::size_t kNameWidth = 13;
constexpr std::size_t kDeepest = 10;  // columns before a line that goes on

class Printer {
 public:
  Printer(std::ostream& out, const HouseholdReport& report, bool colour)
      : out_(out), report_(report), colour_(colour) {}

  void Print() {
    PrintEnd();
    PrintDevice();
    for (const HouseholdReport::Network& network : report_.networks) PrintNetwork(network);
    PrintRadios();
    PrintFindings();
    PrintLog();
    PrintFiles();
  }

 private:
  enum class Shade { Strong, Good, Warning, Bad };

  std::string Shaded(const std::string& text, Shade shade) const {
    static constexpr const char* kCodes[]{"1", "32", "33", "31"};
    if (!colour_) return text;
    return std::string("\x1b[") + kCodes[static_cast<std::size_t>(shade)] + "m" + text + "\x1b[0m";
  }

  /// A text on one line, of which nothing is unseen and which is not the whole screen: blanks at its end as
  /// "\x20", and the beginning of a very long one.
  static std::string Line(const std::string& text) {
    std::string line = PrintableLine(text);
    const std::size_t size = line.size();
    if (size > kLongestText) {
      std::size_t kept = kLongestText;
      while ((static_cast<unsigned char>(line[kept]) & 0xC0U) == 0x80U) --kept;  // whole characters
      return line.substr(0, kept) + "... (" + std::to_string(size - kept) + " bytes more; --json has all)";
    }
    const std::size_t end = line.find_last_not_of(' ') + 1;
    line.resize(end);
    for (std::size_t blank = end; blank < size; ++blank) line += "\\x20";
    return line;
  }

  /// In quotes, so that it can be told from what is around it.
  static std::string Quoted(const std::string& text) {
    std::string escaped;
    for (const char byte : text) {
      if (byte == '"' || byte == '\\') escaped += '\\';
      escaped += byte;
    }
    return '"' + (escaped.size() > kLongestText ? Line(escaped) : PrintableLine(escaped)) + '"';
  }

  static std::string ValueText(const Json::Value& value) {
    if (value.isString()) return Quoted(value.asString());
    if (value.isBool()) return value.asBool() ? "yes" : "no";
    if (value.isInt()) return std::to_string(value.asInt());
    if (value.isArray()) {
      std::string text;
      for (const Json::Value& element : value) text += (text.empty() ? "" : ", ") + ValueText(element);
      return text.empty() ? "none" : text;
    }
    return "?";
  }

  /// A text without quotes: one that the lab itself may have put there.
  static std::string Plain(const Json::Value& value) {
    if (value.isString()) return value.asString().empty() ? "none" : Line(value.asString());
    return ValueText(value);
  }

  static std::string Words(const Setting& setting) {
    return setting.Meaning().empty() ? Plain(setting.now) : setting.Meaning();
  }

  static std::string Was(const Setting& setting) {
    if (!setting.was) return "(none)";
    return setting.was->empty() ? "(empty)" : Line(*setting.was);
  }

  /// The word, where it is another thing that counts.
  static std::string Before(const Setting& setting) {
    return setting.IsLost() && !setting.key.empty() ? Was(setting) + " -> " : "";
  }

  std::string Mark(const Setting& setting) const {
    if (!setting.IsLost() && !setting.decided_elsewhere) return "";
    return Shaded(setting.IsLost() ? " !" : " *", Shade::Warning);
  }

  /// "PERSONAL_WPA2 -> security 4, WPA2".
  std::string Change(const Setting* setting, const char* name) const {
    if (setting == nullptr) return "";
    std::string text = Was(*setting) + " -> " + name + " " + ValueText(setting->now);
    if (!setting->Meaning().empty()) text += ", " + setting->Meaning();
    return text + Mark(*setting);
  }

  void PrintEnd() {
    const std::string name(OutcomeName(report_.outcome));
    const bool good = report_.outcome == Outcome::Migrated || report_.outcome == Outcome::NothingToDo;
    const bool fair =
        report_.outcome == Outcome::MigratedWithFallbacks || report_.outcome == Outcome::Skipped;
    out_ << Shaded(PrintableLine(report_.image), Shade::Strong) << " from build "
         << PrintableLine(report_.from) << ": "
         << Shaded(name, good   ? Shade::Good
                         : fair ? Shade::Warning
                                : Shade::Bad);
    if (report_.signal != 0) {
      out_ << ", killed by signal " << report_.signal << " (" << ::strsignal(report_.signal) << ")\n";
    } else {
      out_ << ", exit status " << report_.status << '\n';
    }
    if (!report_.error.empty()) out_ << "  " << Shaded(Line(report_.error), Shade::Bad) << '\n';
  }

  void PrintDevice() {
    if (report_.device.empty()) return;
    std::vector<std::string> parts;
    for (const Setting& setting : report_.device) {
      if (setting.member == "broadcastDetect.threshold" && !setting.IsLost()) continue;
      std::string text = setting.Title() + ": " + Words(setting);
      if (setting.IsLost()) text += " (was " + Was(setting) + ")";
      parts.push_back(text + Mark(setting));
    }
    out_ << '\n';
    PrintJoined(Shaded("Device", Shade::Strong) + "  ", parts, "; ");
  }

  void PrintNetwork(const HouseholdReport::Network& network) {
    out_ << '\n' << Shaded(PrintableLine(network.name), Shade::Strong);
    const Setting* const smart = FindSetting(network.settings, "smartConnect");
    if (smart != nullptr) {
      out_ << ": smart connect " << Before(*smart) << (smart->now == true ? "on" : "off") << Mark(*smart);
    }
    if (const Setting* const filter = FindSetting(network.settings, "mac_filter_profile_id")) {
      out_ << ", MAC filter " << Was(*filter) << " -> " << FilterText(filter->now) << Mark(*filter);
    }
    out_ << '\n';
    for (const HouseholdReport::Part& radio : network.radios) PrintNetworkRadio(network, radio);
  }

  std::string FilterText(const Json::Value& id) const {
    for (const HouseholdReport::FilterProfile& filter : report_.filters) {
      if (id.isInt() && filter.id == id.asInt()) {
        return "profile " + std::to_string(filter.id) + ", " + PrintableLine(filter.name) + " (" +
               std::to_string(filter.devices.size()) + " devices)";
      }
    }
    return id == -1 ? "none" : "profile " + ValueText(id);
  }

  void PrintNetworkRadio(const HouseholdReport::Network& network, const HouseholdReport::Part& radio) {
    const auto& settings = radio.settings;
    std::vector<std::string> parts;
    const Setting* const enabled = FindSetting(settings, "enabled");
    const Setting* const ssid = FindSetting(settings, "ssid");
    const Setting* const password = FindSetting(settings, "password");
    parts.push_back(Before(*enabled) + (enabled->now == true ? "on" : "off") + Mark(*enabled) + "  " +
                    Before(*ssid) + ValueText(ssid->now) + Mark(*ssid));
    parts.push_back(Change(FindSetting(settings, "security"), "security"));
    const Setting* const pmf = FindSetting(settings, "pmf_mode");
    parts.push_back("PMF " + Before(*pmf) + Words(*pmf) + Mark(*pmf));
    parts.push_back("password " + Plain(password->now) + Mark(*password));
    if (network.is_guest) {
      const Setting* const kept_out = FindSetting(settings, "restrict_guest_access");
      parts.push_back(Before(*kept_out) + (kept_out->now == true ? "kept out" : "let in") + Mark(*kept_out));
    }
    PrintPart(radio, parts);
    PrintOthers(settings, {"enabled", "ssid", "security", "pmf_mode", "password", "restrict_guest_access"});
  }

  void PrintRadios() {
    if (!report_.radios.empty()) out_ << '\n' << Shaded("Radios", Shade::Strong) << '\n';
    for (const HouseholdReport::Part& radio : report_.radios) {
      const auto& settings = radio.settings;
      std::vector<std::string> parts;
      const Setting* const channel = FindSetting(settings, "channel");
      parts.push_back(Was(*channel) + " -> channel " + ValueText(channel->now) +
                      (channel->Meaning().empty() ? "" : ", " + channel->Meaning()) + Mark(*channel));
      parts.push_back(Change(FindSetting(settings, "bandwidth"), "bandwidth"));
      parts.push_back(Change(FindSetting(settings, "mode"), "mode"));
      parts.push_back(Change(FindSetting(settings, "txPower"), "power"));
      const Setting* const dfs = FindSetting(settings, "allowDFSChannels");
      parts.push_back("DFS " + Was(*dfs) + " -> " + ValueText(dfs->now) + Mark(*dfs));
      const Setting* const usb3 = FindSetting(settings, "usb3Enabled");
      parts.push_back("USB 3 " + std::string(usb3->now == true ? "on" : "off") + Mark(*usb3));
      PrintPart(radio, parts);
      PrintOthers(settings, {"channel", "bandwidth", "mode", "txPower", "allowDFSChannels", "usb3Enabled"});
    }
    if (report_.wps.empty()) return;
    const Setting* const enabled = FindSetting(report_.wps, "enabled");
    const Setting* const band = FindSetting(report_.wps, "band");
    const Setting* const pin_enabled = FindSetting(report_.wps, "pin_enabled");
    const Setting* const pin = FindSetting(report_.wps, "pin");
    out_ << "  WPS          " << (enabled->now == true ? "on, " + Words(*band) : "off") << Mark(*enabled)
         << "; by PIN " << Before(*pin_enabled) << (pin_enabled->now == true ? "allowed" : "not allowed")
         << Mark(*pin_enabled) << ", PIN " << Plain(pin->now) << Mark(*pin) << '\n';
    const bool any_decided = std::ranges::any_of(report_.radios, [](const HouseholdReport::Part& radio) {
      return std::ranges::any_of(radio.settings, &Setting::decided_elsewhere);
    });
    if (any_decided) out_ << "  * smart connect: the all-bands file decides\n";
  }

  /// Further settings that were lost.
  void PrintOthers(const std::vector<Setting>& settings, const std::vector<std::string_view>& shown) {
    std::vector<std::string> parts;
    for (const Setting& setting : settings) {
      if (!setting.IsLost() || std::ranges::find(shown, setting.member) != shown.end()) continue;
      std::string text = PrintableLine(setting.key) + " " + Was(setting) + " -> " + ValueText(setting.now);
      if (!setting.Meaning().empty()) text += ", " + setting.Meaning();
      parts.push_back(text);
    }
    if (!parts.empty())
      PrintJoined(std::string(2 + kNameWidth, ' ') + Shaded("! ", Shade::Warning), parts, "; ");
  }

  void PrintPart(const HouseholdReport::Part& part, const std::vector<std::string>& parts) {
    std::string name = RadioName(part.frequency);
    name.resize(std::max(name.size(), kNameWidth), ' ');
    out_ << "  " << name;
    for (std::size_t place = 0; place < parts.size(); ++place)
      out_ << (place == 0 ? "" : "; ") << parts[place];
    out_ << '\n';
  }

  void PrintFindings() {
    out_ << '\n' << Shaded("Findings", Shade::Strong);
    if (report_.findings.empty()) out_ << ": none";
    out_ << '\n';
    for (const HouseholdReport::FindingGroup& group : report_.findings) {
      if (group.cause != nullptr) continue;
      std::string severity(SeverityName(group.kind->severity));
      severity.resize(8, ' ');
      out_ << "  " << Shaded(severity, ShadeOf(group.kind->severity)) << group.kind->id << ": "
           << group.kind->title << ". " << group.kind->meaning << '\n';
      PrintJoined(std::string(10, ' '), Places(group.places), "; ");
      PrintConsequences(*group.kind);
    }
  }

  static Shade ShadeOf(Severity severity) {
    if (severity == Severity::Breaks) return Shade::Bad;
    return severity == Severity::Notes ? Shade::Strong : Shade::Warning;
  }

  /// What follows from a finding, under it.
  void PrintConsequences(const FindingKind& cause) {
    for (const HouseholdReport::FindingGroup& group : report_.findings) {
      if (group.cause != &cause) continue;
      PrintJoined(std::string(10, ' ') + "so " + std::string(group.kind->id) + ": ", Places(group.places),
                  "; ");
    }
  }

  /// The first of them; those in one file name it once.
  static std::vector<std::string> Places(const std::vector<std::string>& places) {
    std::vector<std::string> shown;
    std::string file;
    for (std::size_t number = 0; number < std::min(places.size(), kMostPlaces); ++number) {
      const std::string& place = places[number];
      const std::size_t end = place.find(": ");
      const bool is_same = !file.empty() && end != std::string::npos && place.substr(0, end) == file;
      shown.push_back(Line(is_same ? place.substr(end + 2) : place));
      file = end == std::string::npos ? "" : place.substr(0, end);
    }
    if (places.size() > kMostPlaces) {
      shown.push_back("and " + std::to_string(places.size() - kMostPlaces) + " more (--json has all)");
    }
    return shown;
  }

  void PrintLog() {
    out_ << '\n' << Shaded("Log", Shade::Strong);
    if (report_.log.empty()) out_ << ": nothing";
    out_ << '\n';
    std::vector<std::pair<std::string, int>> lines;
    std::map<std::string, std::string> effects;
    for (const HouseholdReport::Message& message : report_.log) {
      const std::string text =
          (message.number == 0 ? "" : std::to_string(message.number) + " ") + Line(message.text);
      const auto known = std::ranges::find(lines, text, &std::pair<std::string, int>::first);
      if (known == lines.end()) {
        lines.emplace_back(text, 1);
        effects[text] = message.effect;
      } else {
        ++known->second;
      }
    }
    for (const auto& [text, count] : lines) {
      const std::string& effect = effects[text];
      out_ << "  " << text << (count > 1 ? "  (" + std::to_string(count) + " times)" : "");
      // The beginning of a migration is no news.
      if (!effect.empty() && effect != "None.") out_ << "  " << effect;
      out_ << '\n';
    }
  }

  void PrintFiles() {
    out_ << '\n' << Shaded("Files", Shade::Strong);
    if (report_.files == TreeDiff{}) out_ << ": as before";
    out_ << '\n';
    PrintPaths("written", report_.files.written);
    PrintPaths("changed", report_.files.changed);
    PrintPaths("removed", report_.files.removed);
    std::map<std::string, std::vector<std::string>> moved;
    for (const TreeDiff::Move& move : report_.files.moved) {
      moved[move.to.substr(0, move.to.rfind('/') + 1)].push_back(move.from);
    }
    for (const auto& [folder, paths] : moved) PrintPaths("moved to " + PrintableLine(folder), paths);
  }

  /// The paths by their folders: "/etc/hostapd/mac_filter/: mf.info, mf.setting".
  void PrintPaths(const std::string& title, const std::vector<std::string>& paths) {
    std::map<std::string, std::vector<std::string>> folders;
    for (const std::string& path : paths) {
      const std::size_t end = path.rfind('/') + 1;
      folders[path.substr(0, end)].push_back(PrintableLine(path.substr(end)));
    }
    for (const auto& [folder, names] : folders) {
      PrintJoined("  " + title + ": " + PrintableLine(folder) + " ", names, ", ");
    }
  }

  /// The parts with the separator between them, on as many lines as they need.
  void PrintJoined(const std::string& start, const std::vector<std::string>& parts,
                   const std::string& separator) {
    std::string line = start;
    bool is_empty = true;
    for (std::size_t place = 0; place < parts.size(); ++place) {
      const std::string part = parts[place] + (place + 1 < parts.size() ? separator : "");
      if (!is_empty && line.size() + part.size() > kWidth) {
        out_ << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
        line = std::string(std::min(start.find_first_not_of(' '), kDeepest) + 2, ' ');
      }
      line += part;
      is_empty = false;
    }
    out_ << line << '\n';
  }

  std::ostream& out_;
  const HouseholdReport& report_;
  bool colour_;
};

}  // namespace

bool MayColour() {
  const char* const no_color = std::getenv("NO_COLOR");
  return ::isatty(STDOUT_FILENO) == 1 && (no_color == nullptr || *no_color == '\0');
}

void PrintHousehold(std::ostream& out, const HouseholdReport& report, bool colour) {
  Printer(out, report, colour).Print();
}

}  // namespace lab
