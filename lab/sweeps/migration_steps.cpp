#include "lab/sweeps/migration_steps.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "lab/household/known_files.h"
#include "lab/sweeps/descriptor_table.h"
#include "lab/sweeps/documents.h"

namespace lab::sweeps {
namespace {

using Kind = MigrationStep::Kind;

constexpr std::array kDocumentsOf125{kGlobalDocument, kMiscDocument, "/usr/kelp/etc/wifi/radio.json",
                                     "/usr/kelp/etc/wifi/wps.json", kNetworkDocumentPrefix};
constexpr std::array kRemovedOf13{kModelFile, kCountryFile};

const Entry* Find(const Tree& tree, const std::string& path) {
  const auto found = tree.find(path);
  return found == tree.end() ? nullptr : &found->second;
}

bool IsNew(const std::string& path, const Tree& before, const Tree& after) {
  const Entry* const now = Find(after, path);
  const Entry* const earlier = Find(before, path);
  return now != nullptr && (earlier == nullptr || !(*earlier == *now));
}

bool IsMade(const MigrationStep& step, const Tree& before, const Tree& after) {
  switch (step.kind) {
    case Kind::Document:
      if (step.path != kNetworkDocumentPrefix) return IsNew(step.path, before, after);
      return std::any_of(after.begin(), after.end(), [&](const auto& file) {
        return file.first.starts_with(kNetworkDocumentPrefix) && !IsTemporaryName(file.first) &&
               IsNew(file.first, before, after);
      });
    case Kind::ArchiveFolder:
      return after.contains(step.path);
    case Kind::Move:
    case Kind::Removal:
      // A file that never was there cannot be moved, and a run may not go on behind it.
      return before.contains(step.path) && !after.contains(step.path);
  }
  return false;
}

}  // namespace

std::vector<MigrationStep> StepsOf(const Device& device, const std::vector<std::string>& consumed) {
  std::vector<MigrationStep> steps;
  if (device.build_number >= kFirstBuildOf13) {
    steps.push_back({Kind::Document, kGlobalDocument});
    for (const char* const file : kRemovedOf13) steps.push_back({Kind::Removal, file});
    return steps;
  }
  for (const char* const document : kDocumentsOf125) steps.push_back({Kind::Document, document});
  if (!device.files.contains(kArchive)) steps.push_back({Kind::ArchiveFolder, kArchive});
  std::set<std::string> files(kArchivedFiles.begin(), kArchivedFiles.end());
  files.insert(consumed.begin(), consumed.end());
  for (const std::string& file : files) steps.push_back({Kind::Move, file});
  return steps;
}

std::vector<std::string> AccessPointFilesIn(const std::vector<SystemCall>& calls) {
  std::set<std::string> files;
  const DescriptorTable descriptors;
  for (const SystemCall& call : calls) {
    if (call.name != "open" && call.name != "openat") continue;
    const std::string path = descriptors.OpenedBy(call)->path;
    if (path.starts_with(kAccessPointPrefix)) files.insert(path);
  }
  return {files.begin(), files.end()};
}

std::optional<MigrationStep> StepMadeBy(const SystemCall& call, const std::string& first_path,
                                        const std::string& second_path) {
  if (!call.error.empty()) return std::nullopt;
  if (call.name.starts_with("rename")) {
    if (IsDocument(second_path)) return MigrationStep{Kind::Document, second_path};
    return MigrationStep{Kind::Move, first_path};
  }
  if (call.name.starts_with("mkdir")) return MigrationStep{Kind::ArchiveFolder, first_path};
  if (call.name.starts_with("unlink") && !IsTemporaryName(first_path)) {
    return MigrationStep{Kind::Removal, first_path};
  }
  return std::nullopt;
}

std::optional<std::size_t> CountStepsMade(const std::vector<MigrationStep>& steps, const Tree& before,
                                          const Tree& after) {
  const auto is_made = [&](const MigrationStep& step) { return IsMade(step, before, after); };
  const auto first_missing = std::find_if_not(steps.begin(), steps.end(), is_made);
  if (std::any_of(first_missing, steps.end(), is_made)) return std::nullopt;
  return static_cast<std::size_t>(first_missing - steps.begin());
}

}  // namespace lab::sweeps
