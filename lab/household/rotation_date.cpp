#include "lab/household/rotation_date.h"

#include <charconv>
#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

#include "lab/household/legacy_words.h"

namespace lab {
namespace {

/// The numbers of a text in which `separators` stand between them, one each; none for another text, or one
/// with a number too large. Blanks around a number and a plus before it are nothing.
std::optional<std::vector<int>> Numbers(std::string_view text, std::string_view separators) {
  std::vector<int> numbers;
  for (std::size_t place = 0; place <= separators.size(); ++place) {
    text = TrimStart(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    numbers.push_back(number);
    // A blank may itself be what separates.
    if (place == separators.size() || separators[place] != ' ') text = TrimStart(text);
    if (place == separators.size()) break;
    if (!text.starts_with(separators[place])) return std::nullopt;
    text.remove_prefix(1);
  }
  if (!text.empty()) return std::nullopt;
  return numbers;
}

std::optional<std::vector<int>> PartsOf(const std::string& now) {
  return Numbers(now, "-- :");
}

}  // namespace

bool IsOtherDate(const std::string& stored, const std::string& now) {
  const auto was = Numbers(stored, "//");
  const auto is = PartsOf(now);
  if (!was || !is) return true;
  return (*was)[0] != (*is)[0] || (*was)[1] != (*is)[1] || (*was)[2] != (*is)[2];
}

std::optional<RotationTime> TimeIn(const std::string& now) {
  const auto parts = PartsOf(now);
  if (!parts) return std::nullopt;
  return RotationTime{(*parts)[3], (*parts)[4]};
}

bool IsInCalendar(const std::string& now) {
  const auto parts = PartsOf(now);
  if (!parts) return false;
  const int year = (*parts)[0];
  const int month = (*parts)[1];
  const int day = (*parts)[2];
  const int hour = (*parts)[3];
  const int minute = (*parts)[4];
  if (year < 1 || month < 1 || month > 12 || day < 1 || day > 31) return false;
  const std::chrono::year_month_day calendar{std::chrono::year(year),
                                             std::chrono::month(static_cast<unsigned>(month)),
                                             std::chrono::day(static_cast<unsigned>(day))};
  return calendar.ok() && hour >= 0 && hour < 24 && minute >= 0 && minute < 60;
}

}  // namespace lab
