#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "lab/images/tree.h"
#include "lab/runs/program_run.h"

namespace end_to_end {

/// What the device is to look like after a run: the tree before it, and each change that the run is to make.
class ExpectedTree {
 public:
  explicit ExpectedTree(lab::Tree before) : tree_(std::move(before)) {}

  /// A document of mode 0600, with the content that `after` has at `path`: the content is another test's
  /// matter.
  void Written(const std::string& path, const lab::Tree& after);
  void Moved(const std::string& from, const std::string& to);
  void Removed(const std::string& path);
  /// The archive folder, as a run creates it.
  void ArchiveMade();

  /// Compares with all of `after`, and says at which paths it differs.
  void ExpectEqual(const lab::Tree& after) const;

 private:
  lab::Tree tree_;
};

/// Nothing on the device changed.
void ExpectUntouched(const lab::RunResult& run);

/// Exactly the documents named (in the Wi-Fi folder) were written and nothing else changed.
void ExpectOnlyWritten(const lab::RunResult& run, std::initializer_list<std::string_view> documents);

}  // namespace end_to_end
