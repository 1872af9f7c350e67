#include "legacy/enumeration_text.h"

#include <string>
#include <typeinfo>

#include "base/enumeration_names.h"
#include "platform/exceptions.h"
#include "platform/records/country_code.h"
#include "platform/records/supported_model.h"

namespace KELP::Wifi::Updater {
namespace {

static_assert(NameOf(CountryCode::AD) == "AD" && NameOf(CountryCode::MaxCountryCode) == "MaxCountryCode",
              "a country's value lies beyond those whose names are known");

template <typename Enumeration>
Enumeration ToEnumerator(const std::string& text) {
  const auto value = EnumeratorNamed<Enumeration>(text);
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
