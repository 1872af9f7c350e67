#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/records/guest_password_rotation.h"

namespace KELP::Wifi::Updater {

/// The rotation schedule from the "guest_pwd_rotate_" keys of the legacy access-point file at `path`. Missing
/// and unknown values give the fall-backs of their kind. Throws RuntimeError when the date cannot be
/// formatted.
GuestPasswordRotation BuildGuestPasswordRotation(const std::string& path);

/// The value of the key "guest_pwd_rotate_" and `suffix` in the legacy file at `path`; empty when it is
/// missing.
std::string ReadGuestRotationValue(const std::string& path, std::string_view suffix);

/// "year-month-day hour:minute", at least four digits of the year and two of each other number. `date` is
/// year/month/day; with any other number of fields the day is 2021-01-01. What is no number counts as 0 and
/// no range is tested. Throws RuntimeError "Error during formatting." when the C library cannot format it.
std::string FormatRotationDate(const std::string& date, const std::string& hour, const std::string& minute);

/// The fields of `text` between the characters of `delimiters`, untrimmed, empty ones too; none for the empty
/// text. None, with a log line, when memory runs out.
std::vector<std::string> SplitString(const std::string& text, const std::string& delimiters);

}  // namespace KELP::Wifi::Updater
