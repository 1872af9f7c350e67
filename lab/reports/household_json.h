#pragma once

#include <string>

#include "lab/reports/household_report.h"

namespace lab {

/// The report as one JSON object on one line, in ASCII. Texts are as PrintableLine makes them; member
/// "schema" tells the form, 1.
std::string ToJson(const HouseholdReport& report);

}  // namespace lab
