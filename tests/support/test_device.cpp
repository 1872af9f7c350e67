#include "tests/support/test_device.h"

namespace testing_support {

std::string KeyValueText(const Entries& entries) {
  std::string text;
  for (const auto& [key, value] : entries) text.append(key).append("=").append(value).append("\n");
  return text;
}

void TestDevice::WriteEntries(const std::string& path, const Entries& entries) {
  files_.Write(path, KeyValueText(entries));
}

void TestDevice::WriteInfo(const Entries& entries) {
  WriteEntries("/usr/kelp/etc/info.conf", entries);
}

void TestDevice::WriteKernelMAC(int number, std::string_view digits) {
  files_.Write("/proc/sys/kernel/kelp_mac_address" + std::to_string(number), std::string(digits) + "\n");
}

}  // namespace testing_support
