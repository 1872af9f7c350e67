#include "lab/reports/masks.h"

#include <string_view>

#include "lab/household/message_kinds.h"

namespace lab {

std::string MaskedLogText(const NumberedLine& line) {
  const MessageKind* const kind = FindMessageKind(line.number);
  if (kind == nullptr || (line.number != kCannotDecode && line.number != kCannotOpen)) return line.text;
  const std::string message(kind->format.substr(0, kind->format.find('%')));
  return line.text == message ? message : message + kMask;
}

}  // namespace lab
