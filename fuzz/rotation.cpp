// The rotation schedule's date and the split that it and the mail list rest on. Input: a line each of
// delimiters, hour and minute, then the text that is split and, separately, taken for the date.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "builders/guest_password_rotation.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/plain_text.h"

namespace {

using KELP::Wifi::Updater::FormatRotationDate;
using KELP::Wifi::Updater::SplitString;

std::vector<std::string> PlainSplit(const std::string& text, const std::string& delimiters) {
  if (text.empty()) return {};
  std::vector<std::string> fields(1);
  for (const char byte : text) {
    if (delimiters.find(byte) == std::string::npos) {
      fields.back() += byte;
    } else {
      fields.emplace_back();
    }
  }
  return fields;
}

std::string Padded(std::int64_t number, std::size_t width) {
  const std::string digits = std::to_string(number < 0 ? -number : number);
  const std::string sign(number < 0 ? 1 : 0, '-');
  const std::string zeroes(width - std::min(width, digits.size()), '0');
  return sign + zeroes + digits;
}

std::string PlainDate(const std::string& date, const std::string& hour, const std::string& minute) {
  const auto number = [](const std::string& text) { return fuzz::PlainNumber(text).value_or(0); };
  std::string day = "2021-01-01";
  if (std::count(date.begin(), date.end(), '/') == 2) {
    const std::size_t first = date.find('/');
    const std::size_t second = date.rfind('/');
    day = Padded(number(date.substr(0, first)), 4) + "-" +
          Padded(number(date.substr(first + 1, second - first - 1)), 2) + "-" +
          Padded(number(date.substr(second + 1)), 2);
  }
  return day + " " + Padded(number(hour), 2) + ":" + Padded(number(minute), 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string delimiters = input.TakeLine();
  const std::string hour = input.TakeLine();
  const std::string minute = input.TakeLine();
  const std::string text = input.TakeRest();

  for (const std::string& set : {delimiters, std::string(","), std::string("/"), std::string()}) {
    FUZZ_CHECK(SplitString(text, set) == PlainSplit(text, set));
  }
  FUZZ_CHECK(FormatRotationDate(text, hour, minute) == PlainDate(text, hour, minute));
  FUZZ_CHECK(FormatRotationDate(delimiters, minute, hour) == PlainDate(delimiters, minute, hour));
  return 0;
}
