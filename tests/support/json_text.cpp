#include "tests/support/json_text.h"

#include <json/reader.h>

#include <memory>
#include <stdexcept>

namespace testing_support {

Json::Value ParseJson(const std::string& text) {
  Json::CharReaderBuilder settings;
  Json::CharReaderBuilder::strictMode(&settings.settings_);
  const std::unique_ptr<Json::CharReader> reader(settings.newCharReader());
  Json::Value document;
  std::string errors;
  if (!reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
    throw std::runtime_error("no JSON: " + errors + text);
  }
  return document;
}

}  // namespace testing_support
