#include "tests/lab/sweeps/recorded_calls.h"

std::string Hexadecimal(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text = "\"";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += "\\x";
    text += kDigits[value >> 4U];
    text += kDigits[value & 0xFU];
  }
  return text + "\"";
}

std::vector<lab::sweeps::SystemCall> Calls(const std::vector<std::string>& lines) {
  std::string record;
  for (std::string_view rest : lines) {
    record += "4711 ";
    while (!rest.empty()) {
      const std::size_t open = rest.find('\'');
      record += rest.substr(0, open);
      if (open == std::string_view::npos) break;
      const std::size_t close = rest.find('\'', open + 1);
      record += Hexadecimal(rest.substr(open + 1, close - open - 1));
      rest.remove_prefix(close + 1);
    }
    record += '\n';
  }
  return lab::sweeps::ParseRecord(record);
}
