#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace lab::page {

/// What the devices of a fleet have in common, each thing once: most settings of most households are the
/// same.
class SharedValues {
 public:
  /// The value that a JSON text stands for as ScriptData makes it, with every array that holds objects, at
  /// any depth, exchanged for {"refs": [indices]}: each element is at its index among the texts, with its own
  /// arrays exchanged alike. A setting's "file" is left out if it is that of the part that the setting is in.
  /// None if the text is not JSON.
  std::optional<std::string> Share(std::string_view json);

  const std::vector<std::string>& Texts() const { return texts_; }

 private:
  friend class SharingPass;

  std::size_t IndexOf(const std::string& text);
  /// Forgets the texts from that index on.
  void Cut(std::size_t size);

  std::vector<std::string> texts_;
  std::unordered_map<std::string, std::size_t> indices_;
};

}  // namespace lab::page
