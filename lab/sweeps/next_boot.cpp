#include "lab/sweeps/next_boot.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "lab/plain/plain_way.h"
#include "lab/runs/program_run.h"
#include "lab/sweeps/outcome_text.h"

namespace lab::sweeps {
namespace {

constexpr const char* kScript = "/tmp/first-boot";
constexpr const char* kSettings = "/tmp/first-boot.conf";
constexpr const char* kOldBuild = "/usr/kelp/etc/old_build";
constexpr std::string_view kRecords = "/usr/kelp/etc/migration";
constexpr const char* kResult = "/usr/kelp/etc/migration/result";

bool IsRecord(const std::string& path) {
  return path == kOldBuild || path.starts_with(kRecords);
}

Tree WithoutRecords(const Tree& files) {
  Tree rest = files;
  std::erase_if(rest, [](const auto& file) { return IsRecord(file.first); });
  return rest;
}

}  // namespace

NextBoot::NextBoot(const std::filesystem::path& script, const Device& device, Programs programs,
                   Outcome undisturbed)
    : build_number_(device.build_number),
      programs_(std::move(programs)),
      undisturbed_(std::move(undisturbed)) {
  std::ifstream file(script, std::ios::binary);
  script_.assign(std::istreambuf_iterator<char>(file), {});
  if (!file) throw std::runtime_error("cannot read " + script.string());

  Tree files = device.files;
  files[kOldBuild] = {Entry::Kind::File, 0644, std::to_string(build_number_) + "\n"};
  const Outcome cut = Boot(std::move(files), "program=cut\ncut() { kill -9 $$; exit; }\n");
  if (cut.signal == 0) throw std::runtime_error(script.string() + " did not call the program: " + cut.err);
  for (const auto& [path, entry] : cut.files) {
    if (IsRecord(path)) records_.emplace(path, entry);
  }
}

Outcome NextBoot::Boot(Tree files, const std::string& settings) const {
  files[kScript] = {Entry::Kind::File, 0755, script_};
  // Flushing the disks of the machine that the sweep runs on would be no use to anybody.
  files[kSettings] = {Entry::Kind::File, 0644, "sync() { :; }\n" + settings};
  if (IsPlainWay()) throw NeedsMounts("a script that starts programs of the host");
  Manner manner;
  manner.wrapper = {"/bin/sh", kScript, kSettings};
  return Migrate({std::move(files), build_number_}, programs_.migration, manner).outcome;
}

std::optional<std::string> NextBoot::FindWrong(const Tree& state) const {
  Tree files = state;
  files.insert(records_.begin(), records_.end());
  const std::string program = "/usr/sbin/" + programs_.migration.filename().string();
  const Outcome boot = Boot(std::move(files), "program=" + program + "\n");
  if (boot.timed_out) return "did not end";
  if (boot.signal != 0) return "ended by signal " + std::to_string(boot.signal);
  if (boot.status != 0) return "status " + std::to_string(boot.status);
  if (!boot.err.empty()) return "on standard error: " + boot.err;

  const auto result = boot.files.find(kResult);
  const std::string said = result == boot.files.end() ? "nothing" : result->second.content;
  if (!said.starts_with(undisturbed_.status == 0 ? "migrated " : "failed ")) return "it recorded " + said;
  Outcome expected;
  expected.files = undisturbed_.files;
  Outcome found;
  found.files = WithoutRecords(boot.files);
  if (expected == found) return std::nullopt;
  return "the household is not where an undisturbed migration brings it:\n" + Difference(expected, found);
}

}  // namespace lab::sweeps
