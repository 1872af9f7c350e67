#pragma once

#include <gtest/gtest-printers.h>

#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <ostream>
#include <type_traits>

#include "platform/mac_address.h"

/// How failed expectations print records: member by member.

namespace KELP::Wifi {

template <typename Record>
requires boost::describe::has_describe_members<Record>::value void PrintTo(const Record& record,
                                                                           std::ostream* out) {
  *out << '{';
  const char* separator = "";
  boost::mp11::mp_for_each<boost::describe::describe_members<Record, boost::describe::mod_any_access>>(
      [&](auto member) {
        const auto& value = record.*member.pointer;
        *out << separator << member.name << ": ";
        separator = ", ";
        if constexpr (std::is_enum_v<std::remove_cvref_t<decltype(value)>>) {
          *out << static_cast<int>(value);
        } else {
          *out << ::testing::PrintToString(value);
        }
      });
  *out << '}';
}

namespace Daemon {
using Wifi::PrintTo;
}  // namespace Daemon

namespace Util {
inline void PrintTo(const MACAddress& address, std::ostream* out) {
  *out << address.ToString();
}
}  // namespace Util

}  // namespace KELP::Wifi
