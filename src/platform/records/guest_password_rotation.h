#pragma once

#include <boost/describe/class.hpp>
#include <cstdint>
#include <string>
#include <vector>

namespace KELP::Wifi {

/// The schedule by which a guest network changes its password and mails the new one.
struct GuestPasswordRotation {
  bool enable = false;
  std::int32_t date_type = 0;  // 1 for the regular schedule
  std::int32_t strength = 0;   // of the generated password: 0 low, 1 medium, 2 high
  std::string date;            // "year-month-day hour:minute"
  std::string week_day;        // as the daemon's schedule spells it
  bool notify_enable = false;
  std::vector<std::string> mail_list;

  bool operator==(const GuestPasswordRotation&) const = default;
};
BOOST_DESCRIBE_STRUCT(GuestPasswordRotation, (),
                      (enable, date_type, strength, date, week_day, notify_enable, mail_list))

}  // namespace KELP::Wifi
