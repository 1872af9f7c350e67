#include <array>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

#include "lab/findings/places.h"
#include "lab/findings/rules.h"

namespace lab {
namespace {

constexpr int kUnknownDateType = 855;
constexpr int kUnknownStrength = 869;

const std::string kRotate = "pwd_rotate_";

void FindAccess(const Place& place, Findings& findings) {
  const std::optional<std::string> word = place.Was("allow_access_guest");
  if (IsUnclearFlag(word) && !FlagIn(*place.radio.now, "restrict_guest_access")) {
    findings.Add("guests-let-in", place.Told("allow_access_guest"));
  }
}

/// The numbers of "year-month-day hour:minute"; none for another text.
std::optional<std::array<int, 5>> PartsOf(const std::string& date) {
  std::array<int, 5> parts{};
  int used = 0;
  const int read = std::sscanf(date.c_str(), "%d-%d-%d %d:%d%n", parts.data(), &parts[1], &parts[2],
                               &parts[3], &parts[4], &used);
  if (read != 5 || static_cast<std::size_t>(used) != date.size()) return std::nullopt;
  return parts;
}

bool IsInCalendar(const std::string& date) {
  const auto parts = PartsOf(date);
  if (!parts) return false;
  const auto [year, month, day, hour, minute] = *parts;
  if (month < 1 || month > 12 || day < 1 || day > 31) return false;
  const std::chrono::year_month_day calendar{std::chrono::year(year),
                                             std::chrono::month(static_cast<unsigned>(month)),
                                             std::chrono::day(static_cast<unsigned>(day))};
  return calendar.ok() && hour >= 0 && hour < 24 && minute >= 0 && minute < 60;
}

bool AreDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// Whether the stored date is not the year, month and day that the document has. Where the stored text has
/// another form the document's date is a fixed one.
bool IsOtherDate(const std::string& stored, const std::string& now) {
  std::array<int, 3> was{};
  int used = 0;
  const int read = std::sscanf(stored.c_str(), "%d/%d/%d%n", was.data(), &was[1], &was[2], &used);
  if (read != 3 || static_cast<std::size_t>(used) != stored.size()) return true;
  const auto is = PartsOf(now);
  return is && (was[0] != (*is)[0] || was[1] != (*is)[1] || was[2] != (*is)[2]);
}

void FindMail(const Place& place, const Json::Value& rotation, Findings& findings) {
  if (!FlagIn(rotation, "notify_enable") || !rotation["mail_list"].isArray()) return;
  const Json::Value& addresses = rotation["mail_list"];
  bool is_odd = addresses.empty();
  for (const Json::Value& address : addresses) {
    const std::string text = address.isString() ? address.asString() : "";
    is_odd = is_odd || text.empty() || text.front() == ' ' || text.back() == ' ';
  }
  if (is_odd) findings.Add("rotation-mail-odd", place.Told(kRotate + "mail_list"));
}

void FindSchedule(const Place& place, const Json::Value& rotation, Findings& findings) {
  const auto told = [&](const char* suffix) {
    findings.Add("rotation-changed", place.Told(kRotate + suffix));
  };
  const auto was = [&](const char* suffix) { return place.Was(kRotate + suffix).value_or(""); };
  if (place.rehearsal.Logged(kUnknownDateType, was("date_type"))) told("date_type");
  if (place.rehearsal.Logged(kUnknownStrength, was("strength"))) told("strength");
  const std::string date = TextIn(rotation, "date");
  if (IsOtherDate(was("date"), date)) told("date");
  if (!AreDigits(was("hour"))) told("hour");
  if (!AreDigits(was("minute"))) told("minute");
  if (!IsInCalendar(date)) {
    findings.Add("rotation-date-impossible", place.ToldWithoutWord(kRotate + "date") + " is now " + date);
  }
}

void FindRotation(const Place& place, Findings& findings) {
  if (IsUnclearFlag(place.Was(kRotate + "enable"))) {
    findings.Add("rotation-lost", place.Told(kRotate + "enable"));
  }
  const Json::Value& rotation = (*place.radio.now)["guestPasswordRotation"];
  if (!FlagIn(rotation, "enable")) return;
  FindSchedule(place, rotation, findings);
  FindMail(place, rotation, findings);
}

}  // namespace

void FindAboutGuests(const Rehearsal& rehearsal, Findings& findings) {
  ForEachPlace(rehearsal, [&](const Place& place) {
    if (!place.network.is_guest) return;
    FindAccess(place, findings);
    FindRotation(place, findings);
  });
}

}  // namespace lab
