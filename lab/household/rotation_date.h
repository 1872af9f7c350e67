#pragma once

#include <optional>
#include <string>

namespace lab {

/// Whether the date of a guest password's schedule ("2023-07-04 09:05") is not the one that was stored
/// ("2023/7/4"). A stored text of another form is never the date of a document.
bool IsOtherDate(const std::string& stored, const std::string& now);

/// The hour and the minute of such a date; none for a text of another form.
struct RotationTime {
  int hour = 0;
  int minute = 0;
};
std::optional<RotationTime> TimeIn(const std::string& now);

/// Whether a calendar has the date, and a day its time.
bool IsInCalendar(const std::string& now);

}  // namespace lab
