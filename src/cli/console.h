#pragma once

#include <initializer_list>
#include <string_view>

namespace KELP::Wifi::Updater {

/// Writes `parts`, one behind the other, unbuffered. A stream that cannot be written to loses the text; needs
/// no memory, so that running out of it can be reported.
void WriteToStandardOutput(std::initializer_list<std::string_view> parts) noexcept;
void WriteToStandardError(std::initializer_list<std::string_view> parts) noexcept;

/// Lets a closed or broken stream cost the text only: standard descriptors that the caller closed are opened
/// on
/// "/dev/null", so that no file of the run takes their place, and SIGPIPE does not end the process.
void SecureStandardStreams() noexcept;

}  // namespace KELP::Wifi::Updater
