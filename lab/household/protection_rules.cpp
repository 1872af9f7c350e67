#include <optional>
#include <string>

#include "lab/household/legacy_words.h"
#include "lab/household/places.h"
#include "lab/household/rules.h"

namespace lab {
namespace {

constexpr int kUnknownSecurity = 760;
constexpr int kUnknownPMF = 776;

constexpr int kOWE = 1;
constexpr int kWPA3 = 5;
constexpr int kEnterpriseWPA = 8;
constexpr int kEnterpriseWPA3 = 10;
constexpr int kEnterpriseWPAMixed = 11;
constexpr int kPMFOff = 0;
constexpr int kPMFCapable = 1;
constexpr int kPMFRequired = 2;

bool IsWPA3(int security) {
  return security == kWPA3 || security == kEnterpriseWPA3;
}

bool Has(const std::string& word, const char* part) {
  return word.find(part) != std::string::npos;
}

void FindSecurity(const Place& place, FindingCollector& findings) {
  const std::string word = place.Was("security").value_or("");
  if (place.view.Logged(kUnknownSecurity, word)) {
    findings.Add("security-unknown", place.Told("security"));
  }
  const std::string plain = NormalizeValue(word);
  const bool was_wpa3 = Has(plain, "wpa3") && !Has(plain, "wpa2");
  if (was_wpa3 && !IsWPA3(NumberIn(*place.radio.now, "security", 0))) {
    findings.Add("wpa3-weakened", place.Told("security"));
  }
}

/// How much protection a word asked for; nothing for a word that says none.
int WantedPMF(const std::optional<std::string>& word) {
  if (word == "required") return kPMFRequired;
  return word == "capable" ? kPMFCapable : kPMFOff;
}

void FindPMF(const Place& place, FindingCollector& findings) {
  const int now = NumberIn(*place.radio.now, "pmf_mode", kPMFOff);
  const int security = NumberIn(*place.radio.now, "security", 0);
  if (!place.network.is_guest && place.view.Logged(kUnknownPMF, place.Was("pmf_mode").value_or(""))) {
    findings.Add("pmf-unknown", place.Told("pmf_mode"));
  }
  // A key of the guest network's own that is not asked for.
  const std::string own_key = "guest_pmf_mode";
  if (place.network.is_guest && now < WantedPMF(place.view.Was(place.radio.file, own_key))) {
    findings.Add("guest-pmf-weaker", ToldOf(place.view, place.radio.file, own_key) + ", and " +
                                         place.network.Key("pmf_mode") + "=" +
                                         place.Was("pmf_mode").value_or(""));
  }
  if ((IsWPA3(security) || security == kOWE) && now == kPMFOff && FlagIn(*place.radio.now, "enabled")) {
    findings.Add("pmf-missing-for-wpa3", place.Told("security"));
  }
}

void FindServer(const Place& place, FindingCollector& findings) {
  const Json::Value& now = *place.radio.now;
  const int security = NumberIn(now, "security", 0);
  if (security < kEnterpriseWPA || security > kEnterpriseWPAMixed || !FlagIn(now, "enabled")) return;
  if (TextIn(now, "auth_server_ip").empty()) findings.Add("auth-server-lost", place.Told("auth_server_ip"));
  if (NumberIn(now, "auth_server_port", 0) == 0) {
    findings.Add("auth-server-lost", place.Told("auth_server_Port"));
  }
}

}  // namespace

void CheckProtection(const RunView& view, FindingCollector& findings) {
  ForEachNetworkOnRadio(view, findings, [&](const Place& place) {
    FindSecurity(place, findings);
    FindPMF(place, findings);
    FindServer(place, findings);
    if (MaybeMeantYes(place.Was("ap_isolation"))) findings.Add("isolation-lost", place.Told("ap_isolation"));
  });
}

}  // namespace lab
