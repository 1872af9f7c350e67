#pragma once

#include <json/value.h>

#include <array>
#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/enum_names.h"
#include "platform/mac_address.h"
#include "platform/records/global_data.h"
#include "platform/records/network_setting.h"
#include "platform/stand_in/json/record_traits.h"

/// Records to and from JSON. A record becomes an object whose members are named as the record's; both
/// directions follow from the one list of members that stands beside each record.
///
/// bool, signed 32-bit numbers, strings (bytes as they are), vectors and sets become what JSON has for them,
/// an enumeration its name (kWrittenByName) or its number, a MACAddress its text, a record an object of its
/// own or, where kWrittenInPlace says so, members of the object that it stands in.
namespace KELP::Wifi {

template <typename T>
Json::Value ToJson(const T& value);

/// The value that ToJson wrote as `json`. Throws std::runtime_error for a missing member or an unknown
/// name, Json::LogicError for a value of another kind, std::invalid_argument for a malformed MAC address.
template <typename T>
T FromJson(const Json::Value& json);

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

template <typename T>
void ReadMembers(const Json::Value& object, T& record) {
  boost::mp11::mp_for_each<MembersOf<T>>([&](auto member) {
    auto& value = record.*member.pointer;
    using Member = std::remove_reference_t<decltype(value)>;
    if constexpr (kWrittenInPlace<member.pointer>) {
      ReadMembers(object, value);
    } else {
      if (!object.isMember(member.name))
        throw std::runtime_error("missing member " + std::string(member.name));
      value = FromJson<Member>(object[member.name]);
    }
  });
}

template <typename T>
T NamedEnumerator(const std::string& name) {
  const auto value = EnumFromName<T>(name);
  if (!value) throw std::runtime_error("unknown name " + name);
  return *value;
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

template <typename T>
T FromJson(const Json::Value& json) {
  if constexpr (std::is_same_v<T, bool>) {
    return json.asBool();
  } else if constexpr (std::is_same_v<T, std::int32_t>) {
    return json.asInt();
  } else if constexpr (std::is_same_v<T, std::string>) {
    return json.asString();
  } else if constexpr (std::is_enum_v<T> && kWrittenByName<T>) {
    return detail::NamedEnumerator<T>(json.asString());
  } else if constexpr (std::is_enum_v<T>) {
    return static_cast<T>(json.asInt());
  } else if constexpr (std::is_same_v<T, Util::MACAddress>) {
    return Util::MACAddress(json.asString());
  } else if constexpr (detail::IsSequence<T>::value) {
    T sequence;
    for (const Json::Value& element : json) {
      sequence.insert(sequence.end(), FromJson<typename T::value_type>(element));
    }
    return sequence;
  } else {
    T record;
    detail::ReadMembers(json, record);
    return record;
  }
}

}  // namespace KELP::Wifi
