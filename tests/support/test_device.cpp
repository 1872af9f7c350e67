#include "tests/support/test_device.h"

#include "lab/text/key_value.h"

namespace testing_support {

void TestDevice::WriteEntries(const std::string& path, const Entries& entries) {
  files_.Write(path, lab::KeyValueText(entries));
}

void TestDevice::WriteInfo(const Entries& entries) {
  WriteEntries("/usr/kelp/etc/info.conf", entries);
}

void TestDevice::WriteKernelMAC(int number, std::string_view digits) {
  files_.Write("/proc/sys/kernel/kelp_mac_address" + std::to_string(number), std::string(digits) + "\n");
}

}  // namespace testing_support
