#include "lab/sweeps/earlier_run.h"

#include <functional>
#include <stdexcept>
#include <string>

#include "lab/sweeps/documents.h"
#include "lab/sweeps/outcome_text.h"

namespace lab::sweeps {
namespace {

constexpr const char* kAlwaysArchived = "/etc/hostapd/mac_filter/mf.info";
constexpr mode_t kArchiveMode = 0755;

bool StopsRun(const std::string& document, const Device& device) {
  return device.build_number < kFirstBuildOf13 && (document == kGlobalDocument || document == kMiscDocument);
}

/// The device with what `add` puts beside or in place of each document that its run writes, and with `more`.
Device WithTraces(const Device& device, const Programs& programs,
                  const std::function<void(const std::string& document, Tree& files)>& add,
                  const Tree& more = {}) {
  const Outcome without = Migrate(device, programs.migration).outcome;
  Device traced = device;
  for (const auto& [path, entry] : without.files) {
    const auto before = device.files.find(path);
    const bool is_written = before == device.files.end() || !(before->second == entry);
    if (IsDocument(path) && is_written) add(path, traced.files);
  }
  for (const auto& [path, entry] : more) traced.files[path] = entry;
  const Outcome with = Migrate(traced, programs.migration).outcome;
  if (!(with == without)) {
    throw std::runtime_error("an earlier run makes a difference:\n" + Difference(without, with));
  }
  return traced;
}

/// An archive that holds an older file of a name that the run is going to move there.
Tree HalfMadeArchive(const Device& device) {
  const auto consumed = device.files.find(kAlwaysArchived);
  if (device.build_number >= kFirstBuildOf13 || consumed == device.files.end()) return {};
  Entry older = consumed->second;
  older.content = "# older\n" + older.content;
  return {{kArchive, {Entry::Kind::Directory, kArchiveMode, {}}}, {ArchivedPath(kAlwaysArchived), older}};
}

}  // namespace

Device WithOldDocuments(const Device& device, const Programs& programs) {
  return WithTraces(device, programs, [&](const std::string& document, Tree& files) {
    if (StopsRun(document, device)) return;
    files.try_emplace(document, Entry{Entry::Kind::File, kDocumentMode, "{\n\t\"earlier\" : true\n}\n"});
  });
}

Device WithLeftovers(const Device& device, const Programs& programs) {
  const auto add = [](const std::string& document, Tree& files) {
    files[TemporaryNameOf(document)] = {Entry::Kind::File, kDocumentMode, "{\n\t\"torn"};
  };
  return WithTraces(device, programs, add, HalfMadeArchive(device));
}

}  // namespace lab::sweeps
