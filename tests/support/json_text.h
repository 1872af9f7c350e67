#pragma once

#include <json/value.h>

#include <string>

namespace testing_support {

/// The document that `text` is. Throws std::runtime_error with the reason when it is none.
Json::Value ParseJson(const std::string& text);

}  // namespace testing_support
