#include <optional>
#include <string>

#include "lab/household/legacy_words.h"
#include "lab/household/places.h"
#include "lab/household/rotation_date.h"
#include "lab/household/rules.h"

namespace lab {
namespace {

constexpr int kUnknownDateType = 855;
constexpr int kUnknownStrength = 869;

const std::string kRotate = "pwd_rotate_";

void FindAccess(const Place& place, FindingCollector& findings) {
  const std::optional<std::string> word = place.Was("allow_access_guest");
  if (MaybeMeantNo(word) && !FlagIn(*place.radio.now, "restrict_guest_access")) {
    findings.Add("guests-let-in", place.Told("allow_access_guest"));
  }
}

/// Whether a number of the time is all that its word says; a word that is missing says nothing.
bool IsTimeKept(const std::string& word, int number) {
  return !NormalizeValue(word).empty() && IsExactNumber(word, number);
}

void FindMail(const Place& place, const Json::Value& rotation, FindingCollector& findings) {
  if (!FlagIn(rotation, "notify_enable") || !rotation["mail_list"].isArray()) return;
  const Json::Value& addresses = rotation["mail_list"];
  bool is_odd = addresses.empty();
  for (const Json::Value& address : addresses) {
    const std::string text = address.isString() ? address.asString() : "";
    is_odd = is_odd || text.empty() || text.front() == ' ' || text.back() == ' ';
  }
  if (is_odd) findings.Add("rotation-mail-odd", place.Told(kRotate + "mail_list"));
}

void FindSchedule(const Place& place, const Json::Value& rotation, FindingCollector& findings) {
  const auto told = [&](const char* suffix) {
    findings.Add("rotation-changed", place.Told(kRotate + suffix));
  };
  const auto was = [&](const char* suffix) { return place.Was(kRotate + suffix).value_or(""); };
  if (place.view.Logged(kUnknownDateType, was("date_type"))) told("date_type");
  if (place.view.Logged(kUnknownStrength, was("strength"))) told("strength");
  const std::string date = TextIn(rotation, "date");
  if (IsOtherDate(was("date"), date)) told("date");
  const std::optional<RotationTime> time = TimeIn(date);
  if (!time || !IsTimeKept(was("hour"), time->hour)) told("hour");
  if (!time || !IsTimeKept(was("minute"), time->minute)) told("minute");
  if (!IsInCalendar(date)) {
    findings.Add("rotation-date-impossible", place.ToldWithoutWord(kRotate + "date") + " is now " + date);
  }
}

void FindRotation(const Place& place, FindingCollector& findings) {
  if (MaybeMeantYes(place.Was(kRotate + "enable"))) {
    findings.Add("rotation-lost", place.Told(kRotate + "enable"));
  }
  const Json::Value& rotation = (*place.radio.now)["guestPasswordRotation"];
  if (!FlagIn(rotation, "enable")) return;
  FindSchedule(place, rotation, findings);
  FindMail(place, rotation, findings);
}

}  // namespace

void CheckGuests(const RunView& view, FindingCollector& findings) {
  ForEachNetworkOnRadio(view, findings, [&](const Place& place) {
    if (!place.network.is_guest) return;
    FindAccess(place, findings);
    FindRotation(place, findings);
  });
}

}  // namespace lab
