#pragma once

#include <string>

#include "platform/records/country_code.h"
#include "platform/records/supported_model.h"

namespace KELP::Wifi::Updater {

/// The enumerator whose name is exactly `text`; the end marker MaxCountryCode and the model Error are
/// accepted as any other. Throw RuntimeError "Failed to convert string to enum class [%s]: %s", with the
/// run-time type name of the enumeration and the text, for every other text.
CountryCode ToCountryCode(const std::string& text);
Util::SupportedModel ToSupportedModel(const std::string& text);

}  // namespace KELP::Wifi::Updater
