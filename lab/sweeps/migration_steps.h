#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "lab/sweeps/migration_run.h"
#include "lab/sweeps/strace_record.h"

namespace lab::sweeps {

/// One of the steps by which a migration changes a device for good.
struct MigrationStep {
  enum class Kind { Document, ArchiveFolder, Move, Removal };

  Kind kind{};
  std::string path;  // of a document, the archive or an old file

  bool operator==(const MigrationStep&) const = default;
};

/// The file that the last of all documents is called for, whatever the topology.
inline constexpr const char* kNetworkDocumentPrefix = "/usr/kelp/etc/wifi/network.json.";

/// The steps of a migration in the order in which they have to be made, whatever its sources say. Of
/// generation 1.2.5: the documents, global.json first and the network document last (which stands here by its
/// prefix), then the archive folder where there is none, then the consumed files in the order of the bytes of
/// their paths; `consumed` are the access-point files among them. Of generation 1.3: global.json, then the
/// model file, then the country file.
std::vector<MigrationStep> StepsOf(const Device& device, const std::vector<std::string>& consumed);

/// The access-point files that a recorded run read or looked for.
std::vector<std::string> AccessPointFilesIn(const std::vector<SystemCall>& calls);

/// The step that `call` makes; none for any other call and for one that failed.
std::optional<MigrationStep> StepMadeBy(const SystemCall& call, const std::string& first_path,
                                        const std::string& second_path);

/// How many steps, from the first on, were made between `before` and `after`; nothing when one was made
/// behind one that was not, which no run may do.
std::optional<std::size_t> CountStepsMade(const std::vector<MigrationStep>& steps, const Tree& before,
                                          const Tree& after);

}  // namespace lab::sweeps
