#include <gtest/gtest.h>

#include <new>
#include <string>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "platform/json_util.h"
#include "tests/support/failing_allocation.h"

namespace KELP::Wifi::Util::JsonUtil {
namespace {

constexpr const char* kFile = "/document.json";

/// Saves the document while the allocation behind the first `succeeding` fails, alone; false where none did.
bool SaveWithOneFailure(const Json::Value& document, int succeeding) {
  const testing_support::FailingAllocation failing(succeeding, 1);
  try {
    SaveJsonToFile(kFile, document);
  } catch (const std::bad_alloc&) {
    return true;
  }
  return testing_support::FailingAllocation::Failed() > 0;
}

TEST(JsonUtilFailures, DocumentThatMemoryRunsOutForIsNotSavedInPart) {
  Json::Value document(Json::objectValue);
  for (int i = 0; i < 50; ++i) document["member " + std::to_string(i)]["text"] = std::string(100, 'x');
  lab::PrivateRoot device;
  const lab::InRoot inside(device);
  int succeeding = 0;
  while (SaveWithOneFailure(document, succeeding)) {
    if (device.Snapshot().contains(kFile)) {
      ASSERT_EQ(LoadJsonFromFile(kFile), document) << "with " << succeeding << " allocations";
    }
    ASSERT_LT(++succeeding, 10'000);
  }
  EXPECT_GT(succeeding, 50);
  EXPECT_EQ(LoadJsonFromFile(kFile), document);
}

}  // namespace
}  // namespace KELP::Wifi::Util::JsonUtil
