#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/runs/program_run.h"

namespace end_to_end {

inline const std::string kWifi = "/usr/kelp/etc/wifi/";
inline const std::string kArchive = "/usr/kelp/etc/wifi/legacy/";
inline const std::string kFilters = "/etc/hostapd/mac_filter/";
inline const std::string kInformation = "/usr/kelp/etc/info.conf";
inline const std::string kMesh = "/usr/kelp/etc/mesh/mesh.conf";

/// The program under test is the one that was built beside the test. scripts/test-machines names another in
/// the variables KELP_TEST_PROGRAM, KELP_TEST_EMULATOR and KELP_TEST_LIBRARIES (see lab::ForeignMachine), and
/// its devices, with boot environments in that machine's byte order, in KELP_TEST_DEVICES.

/// The image folder of the sample device `name`.
std::filesystem::path Image(std::string_view name);

/// Whether the program under test is one of 32 bits.
bool ProgramHas32Bits();

/// The real program, on `device`, with `arguments` as typed behind its name.
lab::RunResult RunUpdater(lab::PrivateRoot& device, const std::vector<std::string>& arguments,
                          const lab::RunOptions& options = {});

/// As RunUpdater, with "--update-config" and the build number.
lab::RunResult UpdateFrom(lab::PrivateRoot& device, const std::string& build,
                          const lab::RunOptions& options = {});

/// Sets `key` of the information store, which may have it already.
void SetInformation(lab::PrivateRoot& device, const std::string& key, const std::string& value);
/// Takes `key` out of the key=value file at `path`.
void DropKey(lab::PrivateRoot& device, const std::string& path, const std::string& key);

/// The run ended by itself with status 0 and wrote nothing to the console.
void ExpectSuccess(const lab::RunResult& run);

/// The run ended with status 1 and reported one failure: as the last line of its log with `build` as typed,
/// and with the same text on standard error. Gives that text, without its frame.
std::string ExpectFailure(const lab::RunResult& run, const std::string& build);

/// As above; the text is `what`.
void ExpectFailure(const lab::RunResult& run, const std::string& build, const std::string& what);

}  // namespace end_to_end
