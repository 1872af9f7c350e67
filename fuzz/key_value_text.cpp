// The key=value reader. Input: the key to ask for, a LF, the text of the file.
#include <cstdint>
#include <exception>
#include <map>
#include <optional>
#include <string>

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/memory_file.h"
#include "fuzz/support/plain_text.h"
#include "legacy/legacy_value.h"
#include "platform/sdk_utils.h"

namespace {

constexpr std::size_t kLinesTried = 4;  // the file has just changed, so it is read anew for each key

std::optional<std::string> FindInFile(const std::string& path, const std::string& key) {
  try {
    return KELP::Wifi::Util::SDKUtils::FileGetKeyValue(path, key);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile file;
  fuzz::Input input(data, size);
  const std::string asked = input.TakeLine();
  const std::string text = input.TakeRest();
  file.Write(text);

  const std::map<std::string, std::string> all_expected = fuzz::PlainEntries(text);

  const auto check = [&](const std::string& key) {
    const auto known = all_expected.find(key);
    const auto expected = known == all_expected.end() ? std::nullopt : std::optional(known->second);
    FUZZ_CHECK(FindInFile(file.Path(), key) == expected);
    FUZZ_CHECK(KELP::Wifi::Updater::ReadLegacyValue(file.Path(), key, "default") ==
               expected.value_or("default"));
  };
  for (const auto& [key, value] : all_expected) FUZZ_CHECK(FindInFile(file.Path(), key) == value);
  check(asked);
  check(asked + "=" + asked);
  check("");
  std::size_t lines = 0;
  for (const std::string& line : fuzz::PlainLines(text)) {
    if (++lines > kLinesTried) break;
    const std::string key = line.substr(0, line.find('='));
    check(line);
    check(key);
    check('\n' + key);
  }
  return 0;
}
