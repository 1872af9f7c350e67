#pragma once

#include <json/value.h>

/// Records as the documents hold them.
namespace KELP::Wifi::Util::JsonSerializer {

/// The object that a document holds for `record`. There is one for each of GlobalData, MiscSetting,
/// NetworkSetting, RadioSetting and WPSSetting, and for no other type: a program that asks for one does not
/// link. Who wants several records in one document appends their objects to an array.
///
/// All members are in it, and what the daemon reads from it equals the record. Texts stand in it byte for
/// byte. May throw any standard exception.
template <typename Record>
Json::Value Serialize(const Record& record);

}  // namespace KELP::Wifi::Util::JsonSerializer
