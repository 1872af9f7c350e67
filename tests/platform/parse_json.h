#pragma once

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/value.h>

#include <memory>
#include <string>

namespace testing_support {

/// The document that `text` spells.
inline Json::Value ParseJson(const std::string& text) {
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  Json::Value document;
  std::string errors;
  EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &document, &errors)) << errors;
  return document;
}

}  // namespace testing_support
