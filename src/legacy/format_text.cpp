#include "legacy/format_text.h"

#include <cstdarg>
#include <optional>
#include <string>
#include <utility>

#include "base/format_text.h"
#include "platform/exceptions.h"

namespace KELP::Wifi::Updater {

std::string FormatText(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  struct End {
    std::va_list& list;
    ~End() { va_end(list); }
  } end{arguments};
  std::optional<std::string> text = TryFormatTextV(format, arguments);
  if (!text) throw RuntimeError("Error during formatting.");
  return *std::move(text);
}

}  // namespace KELP::Wifi::Updater
