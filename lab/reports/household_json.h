#pragma once

#include <json/value.h>

#include "lab/reports/household_report.h"

namespace lab {

/// The report as one JSON object. Texts are as PrintableLine makes them; member "schema" tells the form, 1.
Json::Value ToJson(const HouseholdReport& report);

}  // namespace lab
