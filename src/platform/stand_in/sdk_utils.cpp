#include "platform/sdk_utils.h"

#include <optional>
#include <stdexcept>

#include "platform/stand_in/text/key_value_text.h"
#include "platform/stand_in/text/parsed_file_cache.h"

namespace KELP::Wifi::Util::SDKUtils {
namespace {

constexpr const char* kInformationStore = "/usr/kelp/etc/info.conf";

/// Made here and not where it is thrown: a frame with nothing to clean up costs an exception a third less.
std::runtime_error MissingKey(const std::string& path, std::string_view key) {
  return std::runtime_error(std::string("no key ").append(key).append(" in ").append(path));
}

}  // namespace

std::string FileGetKeyValue(const std::string& path, std::string_view key) {
  static ParsedFileCache<KeyValueText> files;
  const std::optional<std::string_view> value = files.Get(path).Find(key);
  if (!value) throw MissingKey(path, key);
  return std::string(*value);
}

std::string InfoGetKeyValue(std::string_view key) {
  return FileGetKeyValue(kInformationStore, key);
}

}  // namespace KELP::Wifi::Util::SDKUtils
