#include <gtest/gtest.h>

#include "lab/runs/namespaces.h"

int main(int argument_count, char* arguments[]) {
  // Before GoogleTest: a user namespace can only be entered while there is one thread.
  lab::EnterNamespaces();
  ::testing::InitGoogleTest(&argument_count, arguments);
  return RUN_ALL_TESTS();
}
