#include "lab/sweeps/earlier_run.h"

#include <string>
#include <vector>

#include "lab/sweeps/documents.h"

namespace lab::sweeps {
namespace {

constexpr mode_t kOwnerOnly = 0600;

std::vector<std::string> DocumentsOfRun(const Device& device, const Programs& programs) {
  std::vector<std::string> documents;
  for (const auto& [path, entry] : Migrate(device, programs.migration, programs.tamper).outcome.files) {
    if (IsDocument(path)) documents.push_back(path);
  }
  return documents;
}

bool StopsRun(const std::string& document, const Device& device) {
  return device.build_number < kFirstBuildOf13 && (document == kGlobalDocument || document == kMiscDocument);
}

}  // namespace

Device WithOldDocuments(const Device& device, const Programs& programs) {
  Device older = device;
  for (const std::string& document : DocumentsOfRun(device, programs)) {
    if (StopsRun(document, device)) continue;
    older.files.try_emplace(document, Entry{Entry::Kind::File, kOwnerOnly, "{\n\t\"earlier\" : true\n}\n"});
  }
  return older;
}

Device WithLeftovers(const Device& device, const Programs& programs) {
  Device interrupted = device;
  for (const std::string& document : DocumentsOfRun(device, programs)) {
    interrupted.files[TemporaryNameOf(document)] = {Entry::Kind::File, kOwnerOnly, "{\n\t\"torn"};
  }
  return interrupted;
}

}  // namespace lab::sweeps
