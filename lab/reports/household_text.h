#pragma once

#include <iosfwd>

#include "lab/reports/household_report.h"

namespace lab {

/// Whether what is printed to standard output may have colours: it is a terminal, and NO_COLOR is not set.
bool MayColour();

/// Prints a household before and after for a person: how the run ended, each network and radio, what fell
/// back, the findings, the log with its meaning, and what was moved. A sample device takes one screen.
void PrintHousehold(std::ostream& out, const HouseholdReport& report, bool colour);

}  // namespace lab
