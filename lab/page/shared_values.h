#pragma once

#include <json/value.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace lab::page {

/// What the devices of a fleet have in common, each thing once: most settings of most households are the
/// same.
class SharedValues {
 public:
  /// The value with every array of objects, at any depth, exchanged for {"refs": [places]}: each object
  /// stands at its place among the texts, with its own arrays exchanged alike. A setting's "file" is left out
  /// where it is that of the part it stands in.
  Json::Value Share(const Json::Value& value);

  /// As ScriptData makes them.
  const std::vector<std::string>& Texts() const { return texts_; }

 private:
  Json::Value ShareArray(const Json::Value& array);
  Json::Value ShareObject(const Json::Value& object);

  std::vector<std::string> texts_;
  std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace lab::page
