#include "legacy/enumeration_text.h"

#include <string>
#include <typeinfo>

#include "base/enum_names.h"
#include "platform/exceptions.h"
#include "platform/records/country_code.h"
#include "platform/records/supported_model.h"

namespace KELP::Wifi::Updater {
namespace {

static_assert(EnumName(CountryCode::AD) == "AD" && EnumName(CountryCode::MaxCountryCode) == "MaxCountryCode",
              "a country's value lies beyond those whose names are known");

template <typename Enumeration>
Enumeration ToEnumerator(const std::string& text) {
  const auto value = EnumFromName<Enumeration>(text);
  if (!value) {
    throw RuntimeError("Failed to convert string to enum class [%s]: %s", typeid(Enumeration).name(),
                       text.c_str());
  }
  return *value;
}

}  // namespace

CountryCode ToCountryCode(const std::string& text) {
  return ToEnumerator<CountryCode>(text);
}

Util::SupportedModel ToSupportedModel(const std::string& text) {
  return ToEnumerator<Util::SupportedModel>(text);
}

}  // namespace KELP::Wifi::Updater
