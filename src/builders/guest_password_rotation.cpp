#include "builders/guest_password_rotation.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/constants.hpp>
#include <boost/algorithm/string/split.hpp>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "base/log.h"
#include "legacy/format_text.h"
#include "legacy/legacy_value.h"
#include "legacy/vocabularies.h"
#include "platform/records/guest_password_rotation.h"

namespace KELP::Wifi::Updater {
namespace {

struct Day {
  std::int32_t year = 2021;
  std::int32_t month = 1;
  std::int32_t day = 1;
};

Day ParseDay(const std::string& date) {
  const std::vector<std::string> fields = SplitString(date, "/");
  if (fields.size() != 3) return {};
  return {ParseLegacyInt(fields[0], 0), ParseLegacyInt(fields[1], 0), ParseLegacyInt(fields[2], 0)};
}

}  // namespace

GuestPasswordRotation BuildGuestPasswordRotation(const std::string& path) {
  const auto read = [&](std::string_view suffix) { return ReadGuestRotationValue(path, suffix); };

  GuestPasswordRotation rotation;
  rotation.enable = IsYes(read("enable"));
  rotation.date_type = ToRotationDateType(read("date_type"));
  rotation.strength = ToRotationStrength(read("strength"));
  const std::string date = read("date");
  const std::string hour = read("hour");
  const std::string minute = read("minute");
  rotation.date = FormatRotationDate(date, hour, minute);
  rotation.week_day = read("week_day");
  rotation.notify_enable = IsYes(read("notify_enable"));
  rotation.mail_list = SplitString(read("mail_list"), ",");
  return rotation;
}

std::string ReadGuestRotationValue(const std::string& path, std::string_view suffix) {
  return ReadLegacyValue(path, std::string("guest_pwd_rotate_").append(suffix), "");
}

std::string FormatRotationDate(const std::string& date, const std::string& hour, const std::string& minute) {
  const Day day = ParseDay(date);
  return FormatText("%.4d-%.2d-%.2d %.2d:%.2d", day.year, day.month, day.day, ParseLegacyInt(hour, 0),
                    ParseLegacyInt(minute, 0));
}

std::vector<std::string> SplitString(const std::string& text, const std::string& delimiters) {
  std::vector<std::string> fields;
  if (text.empty()) return fields;
  try {
    boost::algorithm::split(fields, text, boost::algorithm::is_any_of(delimiters),
                            boost::algorithm::token_compress_off);
  } catch (const std::exception&) {
    Log(LOG_ERR, "%s:%d Failed to split string: %s", 920, text.c_str());
    fields.clear();
  }
  return fields;
}

}  // namespace KELP::Wifi::Updater
