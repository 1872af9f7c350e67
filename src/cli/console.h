#pragma once

#include <initializer_list>
#include <string_view>

namespace KELP::Wifi::Updater {

/// Writes `parts`, one after the other, unbuffered. A stream that cannot be written to loses the text, from
/// the part that fails on, and so does one that nobody reads until ReportWaitBudget is used up. Needs no
/// memory, so that running out of it can be reported.
void WriteToStandardOutput(std::initializer_list<std::string_view> parts) noexcept;
void WriteToStandardError(std::initializer_list<std::string_view> parts) noexcept;

/// Puts the root folder, which every device has, at the standard descriptors that the caller closed, so that
/// no file of the run takes their place. What is written there is lost, as it would have been.
void SecureStandardStreams() noexcept;

}  // namespace KELP::Wifi::Updater
