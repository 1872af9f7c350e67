#include "platform/sdk_utils.h"

#include <optional>
#include <stdexcept>

#include "platform/stand_in/text/key_value_text.h"
#include "platform/stand_in/text/remembered_files.h"

namespace KELP::Wifi::Util::SDKUtils {
namespace {

constexpr const char* kInformationStore = "/usr/kelp/etc/info.conf";

}  // namespace

std::string FileGetKeyValue(const std::string& path, std::string_view key) {
  static RememberedFiles<KeyValueText> files;
  const std::optional<std::string_view> value = files.Get(path).Find(key);
  if (!value) throw std::runtime_error("no key " + std::string(key) + " in " + path);
  return std::string(*value);
}

std::string InfoGetKeyValue(std::string_view key) {
  return FileGetKeyValue(kInformationStore, key);
}

}  // namespace KELP::Wifi::Util::SDKUtils
