#pragma once

#include <json/writer.h>

#include <boost/describe/members.hpp>
#include <ostream>

#include "platform/json_serializer.h"

/// How failed expectations print records: as their documents.

namespace KELP::Wifi {

template <typename Record>
requires boost::describe::has_describe_members<Record>::value void PrintTo(const Record& record,
                                                                           std::ostream* out) {
  *out << Util::JsonSerializer::Serialize(record);
}

namespace Daemon {
using Wifi::PrintTo;
}  // namespace Daemon

}  // namespace KELP::Wifi
