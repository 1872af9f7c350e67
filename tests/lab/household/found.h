#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lab/household/findings.h"
#include "tests/lab/household/household.h"

namespace lab_test {

/// "id: detail" of each finding in an update of the household.
inline std::vector<std::string> Found(Household& household, const std::string& from = "8000") {
  std::vector<std::string> found;
  for (const lab::Finding& finding : lab::DetectFindings(household.Update(from))) {
    found.push_back(std::string(finding.kind->id) + ": " + finding.detail);
  }
  return found;
}

}  // namespace lab_test
