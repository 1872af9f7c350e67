#pragma once

#include <string>
#include <string_view>

#include "lab/page/shared_values.h"

namespace lab::page {

enum class Kind {
  /// One device, as ToJson(HouseholdReport) gives it.
  Household,
  /// The records of a fleet, with a "household" of that form or without.
  Fleet,
  /// Devices with what two programs make of them: {"image", "from", "differences": [{"what", "old", "new"}]}.
  Comparison,
};

/// A page that a browser shows without anything besides: style, script and data stand in it, and its policy
/// lets it ask for nothing more. It shows what it is given: what is to be masked is masked before. Bytes that
/// are no UTF-8 and marks that turn the direction of writing are shown as ScriptData tells.
class Page {
 public:
  explicit Page(Kind kind) : kind_(kind) {}

  /// A device as a JSON text. Throws std::invalid_argument for anything but an object.
  void Add(std::string_view json);

  /// A device that a comparison found nothing in: it is counted, no more.
  void AddUnchanged() { ++unchanged_; }

  std::string Html() const;

 private:
  std::string Data() const;

  Kind kind_;
  SharedValues shared_;
  std::string devices_;
  std::size_t unchanged_ = 0;
};

}  // namespace lab::page
