#pragma once

#include <set>
#include <string>
#include <vector>

namespace lab_test {

using Names = std::set<std::string>;

/// A row of a table or a paragraph of docs/migration-map.md, and what stands between back-ticks in it.
struct Passage {
  std::string text;
  Names names;
};

std::vector<Passage> PassagesOfTheMap();

}  // namespace lab_test
