#include "tests/cli/failing_facts.h"

#include "platform/records/supported_model.h"

namespace {

bool is_failing = false;

}  // namespace

namespace testing_support {

FailingFacts::FailingFacts() {
  is_failing = true;
}

FailingFacts::~FailingFacts() {
  is_failing = false;
}

}  // namespace testing_support

using KELP::Wifi::Util::SupportedModel;

// The operation as the linker knows it.
SupportedModel RealGetSupportedModel() __asm__("__real__ZN4KELP4Wifi7Updater17GetSupportedModelEv");
SupportedModel WrapGetSupportedModel() __asm__("__wrap__ZN4KELP4Wifi7Updater17GetSupportedModelEv");
SupportedModel WrapGetSupportedModel() {
  if (is_failing) throw 1;
  return RealGetSupportedModel();
}
