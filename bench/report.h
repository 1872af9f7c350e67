#pragma once

#include <iosfwd>
#include <string>

#include "bench/figures.h"

namespace bench {

/// For a person.
void PrintTable(std::ostream& out, const Comparison& comparison);

/// For a machine: everything, counts by name included.
std::string ToJson(const Comparison& comparison);

/// For the documentation: bar charts, as SVG.
std::string ToChart(const Comparison& comparison);

}  // namespace bench
