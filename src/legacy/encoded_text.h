#pragma once

#include <string>

namespace KELP::Wifi::Updater {

/// The text that `stored` is the base64 of, bytes, cut at its first NUL. Empty, with a log line, when it is
/// no base64 or decodes to more than 8192 bytes. The empty text gives the empty text. Throws no decoding
/// failure.
std::string DecodeBase64Text(const std::string& stored);

/// The plain text of a secret that the platform's cipher sealed. Empty, with a log line that shows the sealed
/// text only, when it cannot be opened or is longer than 8191 bytes; so for the empty text.
std::string DecryptSsid(const std::string& stored);

}  // namespace KELP::Wifi::Updater
