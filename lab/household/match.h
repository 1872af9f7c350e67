#pragma once

#include <json/value.h>

#include "lab/household/run_view.h"
#include "lab/household/settings_table.h"

namespace lab {

/// How a stored value and the document's agree. What was meant is what the program makes of the value without
/// white space around it, and in the letters that the vocabulary has.
enum class Match {
  AsMeant,
  ByLuck,     // as meant, though not spelled as the program reads it
  NotStored,  // missing or empty
  Lost,       // another value, or none
};

/// For all forms but Form::Rule. A document that holds a value of another kind is as meant.
Match MatchOf(const SettingRow& row, const StoredValue& stored, const Json::Value& now);

}  // namespace lab
