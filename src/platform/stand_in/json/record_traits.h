#pragma once

namespace KELP::Wifi {

/// True for an enumeration that the documents spell by its enumerators' names; all others are written as
/// numbers.
template <typename Enumeration>
inline constexpr bool kWrittenByName = false;

/// True for a member, itself a record, whose members stand directly in the object of the record that holds
/// it.
template <auto Member>
inline constexpr bool kWrittenInPlace = false;

}  // namespace KELP::Wifi
