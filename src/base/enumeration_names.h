#pragma once

#include <magic_enum/magic_enum.hpp>
#include <optional>
#include <string_view>

#include "platform/records/country_code.h"

/// Without this the names of values above 127 would be unknown.
template <>
struct magic_enum::customize::enum_range<KELP::Wifi::CountryCode> {
  static constexpr int min = 0;
  static constexpr int max = 197;
};

namespace KELP::Wifi {

/// The enumerator's name; empty for a value without one.
template <typename Enumeration>
std::string_view NameOf(Enumeration value) {
  return magic_enum::enum_name(value);
}

/// The enumerator with exactly this name: whole, case-sensitive.
template <typename Enumeration>
std::optional<Enumeration> EnumeratorNamed(std::string_view name) {
  return magic_enum::enum_cast<Enumeration>(name);
}

}  // namespace KELP::Wifi
