#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/images/tree.h"
#include "lab/runs/program_run.h"

namespace first_boot {

inline const std::string kWifi = "/usr/kelp/etc/wifi/";
inline const std::string kOldBuild = "/usr/kelp/etc/old_build";
inline const std::string kState = "/usr/kelp/etc/migration";
inline const std::string kResult = kState + "/result";
inline const std::string kRandom = "/dev/urandom";

/// The shells that devices have: dash, and busybox with its own tools as far as this machine has it.
enum class Shell { Dash, Busybox };
bool IsThere(Shell shell);

/// The sample device `name`, upgraded from `old_build` (the file's whole text).
lab::PrivateRoot Upgraded(std::string_view name, std::string_view old_build);
/// A device with the files of `tree`.
lab::PrivateRoot FromTree(const lab::Tree& tree);

/// Boots the device once: kelp-first-boot runs on it with the real program. `settings` is added to the file
/// of its settings, which spares the machine that the tests run on the flushes.
lab::RunResult Boot(lab::PrivateRoot& device, Shell shell, const std::string& settings = "",
                    const lab::RunOptions& options = {});

/// Runs kelp-migrate-again on the device, with arguments as a shell reads them.
lab::RunResult MigrateAgain(lab::PrivateRoot& device, Shell shell, const std::string& arguments = "",
                            const std::string& settings = "");

/// The program alone, undisturbed.
lab::RunResult Migrate(lab::PrivateRoot& device, const std::string& build);

/// What the household has: without temporary files, what the script keeps, and folders that every private
/// root has.
lab::Tree Household(const lab::Tree& tree);

/// The paths at which two devices differ.
std::vector<std::string> Differing(const lab::Tree& expected, const lab::Tree& found);

/// The file that the device reports.
std::string Result(const lab::PrivateRoot& device);

/// Ended with 0 and said nothing.
void ExpectQuiet(const lab::RunResult& boot);

}  // namespace first_boot
