#include "lab/sweeps/earlier_run.h"

#include <functional>
#include <stdexcept>
#include <string>

#include "lab/sweeps/documents.h"
#include "lab/sweeps/outcome_text.h"

namespace lab::sweeps {
namespace {

bool StopsRun(const std::string& document, const Device& device) {
  return device.build_number < kFirstBuildOf13 && (document == kGlobalDocument || document == kMiscDocument);
}

/// The device with what `add` puts beside or in place of each document that its run writes.
Device WithTraces(const Device& device, const Programs& programs,
                  const std::function<void(const std::string& document, Tree& files)>& add) {
  const Outcome without = Migrate(device, programs.migration, programs.tamper).outcome;
  Device traced = device;
  for (const auto& [path, entry] : without.files) {
    const auto before = device.files.find(path);
    const bool is_written = before == device.files.end() || !(before->second == entry);
    if (IsDocument(path) && is_written) add(path, traced.files);
  }
  const Outcome with = Migrate(traced, programs.migration, programs.tamper).outcome;
  if (!(with == without)) {
    throw std::runtime_error("an earlier run makes a difference:\n" + Difference(without, with));
  }
  return traced;
}

}  // namespace

Device WithOldDocuments(const Device& device, const Programs& programs) {
  return WithTraces(device, programs, [&](const std::string& document, Tree& files) {
    if (StopsRun(document, device)) return;
    files.try_emplace(document, Entry{Entry::Kind::File, kDocumentMode, "{\n\t\"earlier\" : true\n}\n"});
  });
}

Device WithLeftovers(const Device& device, const Programs& programs) {
  return WithTraces(device, programs, [](const std::string& document, Tree& files) {
    files[TemporaryNameOf(document)] = {Entry::Kind::File, kDocumentMode, "{\n\t\"torn"};
  });
}

}  // namespace lab::sweeps
