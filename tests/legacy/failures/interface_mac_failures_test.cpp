#include <gtest/gtest.h>

#include <string>

#include "legacy/interface_mac.h"
#include "legacy/radios.h"
#include "platform/exceptions.h"
#include "tests/support/failing_calls.h"

namespace KELP::Wifi::Updater {
namespace {

using testing_support::FailingFormat;

template <typename Operation>
std::string ErrorOf(Operation operation) {
  try {
    operation();
  } catch (const RuntimeError& error) {
    return error.what();
  }
  return "";
}

TEST(InterfaceMACFailures, PathThatCannotBeFormattedThrows) {
  const FailingFormat failing("/usr/kelp/etc/wifi/wifi_ap_%s");
  EXPECT_EQ(ErrorOf([] { GetAccessPointFilePath({}, kAllBands); }),
            "Error during formatting.: runtime error");
}

TEST(InterfaceMACFailures, NameOfTheKernelEntryThatCannotBeFormattedThrows) {
  const FailingFormat failing("/proc/sys/kernel/kelp_mac_address%d");
  EXPECT_EQ(ErrorOf([] { ReadInterfaceMAC(4); }), "Error during formatting.: runtime error");
  EXPECT_EQ(ErrorOf([] { GetAccessPointFilePath({}, kBand24); }), "Error during formatting.: runtime error");
}

}  // namespace
}  // namespace KELP::Wifi::Updater
