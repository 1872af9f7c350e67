#pragma once

#include <string>
#include <vector>

namespace KELP::Wifi {

struct GuestPasswordRotation {
  std::vector<std::string> mail_list;
  std::string date;
  std::string week_day;
  int date_type = 0;
  int strength = 0;
  bool enable = false;
  bool notify_enable = false;
};

}  // namespace KELP::Wifi
