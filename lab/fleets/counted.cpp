#include "lab/fleets/counted.h"

namespace lab::fleets {

std::string Counted(std::size_t number, const std::string& thing) {
  return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

}  // namespace lab::fleets
