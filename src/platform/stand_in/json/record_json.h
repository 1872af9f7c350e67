#pragma once

#include <json/value.h>

#include <array>
#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <cstdint>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/enum_names.h"
#include "platform/mac_address.h"
#include "platform/records/global_data.h"
#include "platform/records/network_setting.h"
#include "platform/stand_in/json/record_traits.h"

/// Records to JSON. A record becomes an object whose members are named as the record's: what stands in the
/// list of members beside it.
///
/// bool, signed 32-bit numbers, strings (bytes as they are), vectors and sets become what JSON has for them,
/// an enumeration its name (kWrittenByName) or its number, a MACAddress its text, a record an object of its
/// own or, where kWrittenInPlace says so, members of the object that it stands in.
namespace KELP::Wifi {

template <typename T>
Json::Value ToJson(const T& value);

template <>
inline constexpr bool kWrittenByName<CountryCode> = true;
template <>
inline constexpr bool kWrittenByName<Util::SupportedModel> = true;
template <>
inline constexpr bool kWrittenInPlace<&NetworkSetting::allBands> = true;

namespace detail {

template <typename T>
using MembersOf = boost::describe::describe_members<T, boost::describe::mod_any_access>;

template <typename T>
struct IsSequence : std::false_type {};
template <typename T>
struct IsSequence<std::vector<T>> : std::true_type {};
template <typename T>
struct IsSequence<std::set<T>> : std::true_type {};
template <typename T, std::size_t Size>
struct IsSequence<std::array<T, Size>> : std::true_type {};

template <typename T>
void WriteMembers(const T& record, Json::Value& object) {
  boost::mp11::mp_for_each<MembersOf<T>>([&](auto member) {
    const auto& value = record.*member.pointer;
    if constexpr (kWrittenInPlace<member.pointer>) {
      WriteMembers(value, object);
    } else {
      Json::Value json = ToJson(value);
      object[Json::StaticString(member.name)].swapPayload(json);  // neither has comments to be swapped
    }
  });
}

}  // namespace detail

template <typename T>
Json::Value ToJson(const T& value) {
  if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, std::int32_t> ||
                std::is_same_v<T, std::string>) {
    return value;
  } else if constexpr (std::is_enum_v<T> && kWrittenByName<T>) {
    return std::string(EnumName(value));
  } else if constexpr (std::is_enum_v<T>) {
    return static_cast<std::int32_t>(value);
  } else if constexpr (std::is_same_v<T, Util::MACAddress>) {
    return value.ToString();
  } else if constexpr (detail::IsSequence<T>::value) {
    Json::Value array(Json::arrayValue);
    for (const auto& element : value) array.append(ToJson(element));
    return array;
  } else {
    Json::Value object(Json::objectValue);
    detail::WriteMembers(value, object);
    return object;
  }
}

}  // namespace KELP::Wifi
