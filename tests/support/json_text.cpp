#include "tests/support/json_text.h"

#include <optional>
#include <stdexcept>
#include <utility>

#include "lab/text/json.h"

namespace testing_support {

Json::Value ParseJson(const std::string& text) {
  std::optional<Json::Value> document = lab::ParseJson(text);
  if (!document) throw std::runtime_error("no JSON: " + text);
  return std::move(*document);
}

}  // namespace testing_support
