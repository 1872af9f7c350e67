#include "platform/json_serializer.h"

#include "platform/records/global_data.h"
#include "platform/records/misc_setting.h"
#include "platform/records/network_setting.h"
#include "platform/records/radio_setting.h"
#include "platform/records/wps_setting.h"
#include "platform/stand_in/json/record_json.h"

namespace KELP::Wifi::Util::JsonSerializer {

template <typename Record>
Json::Value Serialize(const Record& record) {
  return ToJson(record);
}

template Json::Value Serialize(const Daemon::GlobalData& record);
template Json::Value Serialize(const Daemon::MiscSetting& record);
template Json::Value Serialize(const NetworkSetting& record);
template Json::Value Serialize(const RadioSetting& record);
template Json::Value Serialize(const WPSSetting& record);

}  // namespace KELP::Wifi::Util::JsonSerializer
