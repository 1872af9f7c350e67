#pragma once

#include <magic_enum/magic_enum.hpp>
#include <optional>
#include <string_view>

/// Enumerations whose enumerators lie between -128 and 255; the build sets these bounds for every source, so
/// that an enumeration needs no word about them beside it.
namespace KELP::Wifi {

/// The enumerator's name; empty for a value without one.
template <typename Enumeration>
constexpr std::string_view EnumName(Enumeration value) {
  return magic_enum::enum_name(value);
}

/// The enumerator with exactly this name: whole, case-sensitive.
template <typename Enumeration>
constexpr std::optional<Enumeration> EnumFromName(std::string_view name) {
  return magic_enum::enum_cast<Enumeration>(name);
}

}  // namespace KELP::Wifi
