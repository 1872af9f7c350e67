#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lab {

/// A member of a JSON object, and the object's text without it and with it changed.
struct JsonMember {
  std::string name;
  std::vector<std::string> others;
};

/// The members of the object that `text` is; none where it is none.
std::vector<JsonMember> JsonMembers(std::string_view text);

}  // namespace lab
