#pragma once

#include <string_view>

namespace lab {

// What a legacy key or a document's member holds, by its name, in whatever letters it is spelled. Quotes and
// blanks around the name are nothing.

/// A password, shared secret, key or PIN.
bool IsSecretKey(std::string_view key);
/// A network's name.
bool IsSsidKey(std::string_view key);
/// A network's name in base64, as the access-point files have it.
bool IsStoredSsidKey(std::string_view key);
/// What people call a device, or its number.
bool IsNameKey(std::string_view key);
bool IsMacKey(std::string_view key);
/// Mail addresses with commas between them.
bool IsMailKey(std::string_view key);

}  // namespace lab
