#include "lab/household/stored_name.h"

namespace lab {
namespace {

/// How many bytes a base64 text of that length stands for.
std::size_t DecodedSize(std::string_view base64) {
  std::size_t padding = 0;
  while (padding < 2 && padding < base64.size() && base64[base64.size() - 1 - padding] == '=') ++padding;
  return base64.size() / 4 * 3 - padding;
}

}  // namespace

bool IsNameCut(std::string_view stored, const std::string& now) {
  return now.size() < DecodedSize(stored);
}

}  // namespace lab
