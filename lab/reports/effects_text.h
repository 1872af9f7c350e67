#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "lab/experiments/effects.h"
#include "lab/reports/discretion.h"

namespace lab {

/// Prints what each input moves, a line an input ("wifi_wps: wps_ap_pin -> wps.json.pin"), and then the
/// inputs without any effect. With `member` only those that move a member whose path holds it. What the
/// program said is shown with `discretion`.
void PrintEffects(std::ostream& out, const std::vector<Effect>& effects, const std::string& member,
                  const Discretion& discretion);

/// Members by the objects that they are in: "radio.json[0].channel, .channel2; wps.json.band".
std::string MembersText(const std::set<std::string>& members);

}  // namespace lab
