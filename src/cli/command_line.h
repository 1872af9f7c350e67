#pragma once

namespace KELP::Wifi::Updater {

/// The program: finds the option's handler and hands it the option's value. Arguments as main takes them.
/// Gives the handler's result as the exit status, or 1 for a usage error, which only the console hears of.
int RunCommandLine(int argument_count, const char* const* arguments);

}  // namespace KELP::Wifi::Updater
