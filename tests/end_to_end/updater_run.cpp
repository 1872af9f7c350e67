#include "tests/end_to_end/updater_run.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <optional>

#include "lab/runs/collected_documents.h"
#include "lab/text/key_value.h"
#include "tests/support/log_lines.h"

namespace end_to_end {
namespace {

constexpr std::string_view kFailure = "Failed to update config, error: ";

std::filesystem::path FromEnvironment(const char* variable, const char* otherwise) {
  const char* const value = std::getenv(variable);
  return value != nullptr ? value : otherwise;
}

std::optional<lab::ForeignMachine> MachineUnderTest() {
  const std::filesystem::path emulator = FromEnvironment("KELP_TEST_EMULATOR", "");
  if (emulator.empty()) return std::nullopt;
  return lab::ForeignMachine{emulator, FromEnvironment("KELP_TEST_LIBRARIES", "/")};
}

void CopyCounters(const std::filesystem::path& from, const std::filesystem::path& to) {
  for (const auto& file : std::filesystem::recursive_directory_iterator(from)) {
    if (file.path().extension() != ".gcda") continue;
    const std::filesystem::path copy = to / file.path().lexically_relative(from);
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(file.path(), copy, std::filesystem::copy_options::overwrite_existing);
  }
}

/// The counters of a program that scripts/coverage built, in the folder that KELP_COUNTERS names: the device
/// gets them while the program runs, which adds to them.
class Counters {
 public:
  explicit Counters(lab::PrivateRoot& device) : device_(device), host_(FromEnvironment("KELP_COUNTERS", "")) {
    if (IsCounted()) CopyCounters(host_, Place());
  }
  Counters(const Counters&) = delete;
  Counters& operator=(const Counters&) = delete;
  ~Counters() {
    if (!IsCounted()) return;
    CopyCounters(Place(), host_);
    device_.Remove(kFolder);
  }

  bool IsCounted() const { return !host_.empty(); }
  static constexpr const char* kFolder = "/counters";

 private:
  std::filesystem::path Place() const { return device_.Path() / "counters" / host_.relative_path(); }

  lab::PrivateRoot& device_;
  std::filesystem::path host_;
};

std::filesystem::path ProgramUnderTest() {
  return FromEnvironment("KELP_TEST_PROGRAM", KELP_PROGRAM);
}

}  // namespace

std::filesystem::path Image(std::string_view name) {
  return FromEnvironment("KELP_TEST_DEVICES", KELP_DEVICES) / name;
}

bool ProgramHas32Bits() {
  std::array<char, EI_NIDENT> identification{};
  std::ifstream(ProgramUnderTest(), std::ios::binary).read(identification.data(), identification.size());
  return identification.at(EI_CLASS) == ELFCLASS32;
}

lab::RunResult RunUpdater(lab::PrivateRoot& device, const std::vector<std::string>& arguments,
                          const lab::RunOptions& options) {
  lab::RunOptions on_machine = options;
  on_machine.machine = MachineUnderTest();
  const Counters counters(device);
  if (counters.IsCounted()) on_machine.environment.push_back(std::string("GCOV_PREFIX=") + Counters::kFolder);
  lab::RunResult run = lab::RunProgram(device, ProgramUnderTest(), arguments, on_machine);
  for (lab::Tree* tree : {&run.before, &run.after}) {
    std::erase_if(*tree, [](const auto& entry) { return entry.first.starts_with(Counters::kFolder); });
  }
  lab::CollectDocuments(run.before, run.after);
  return run;
}

lab::RunResult UpdateFrom(lab::PrivateRoot& device, const std::string& build,
                          const lab::RunOptions& options) {
  return RunUpdater(device, {"--update-config", build}, options);
}

void SetInformation(lab::PrivateRoot& device, const std::string& key, const std::string& value) {
  device.Write(kInformation, lab::WithValue(device.Read(kInformation), key, value));
}

void DropKey(lab::PrivateRoot& device, const std::string& path, const std::string& key) {
  device.Write(path, lab::WithoutKey(device.Read(path), key));
}

void ExpectSuccess(const lab::RunResult& run) {
  EXPECT_FALSE(run.timed_out);
  EXPECT_EQ(run.signal, 0);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
}

std::string ExpectFailure(const lab::RunResult& run, const std::string& build) {
  EXPECT_FALSE(run.timed_out);
  EXPECT_EQ(run.signal, 0);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  if (run.err.size() <= kFailure.size() || run.err.compare(0, kFailure.size(), kFailure) != 0 ||
      run.err.back() != '\n') {
    ADD_FAILURE() << "standard error is no failure line: " << run.err;
    return "";
  }
  const std::string what = run.err.substr(kFailure.size(), run.err.size() - kFailure.size() - 1);

  const testing_support::LogLines log = testing_support::PrintLog(run.log);
  const std::string line =
      testing_support::Error(954, std::string(kFailure) + what + ", buildNumber: " + build);
  if (log.empty()) {
    ADD_FAILURE() << "nothing was logged";
  } else {
    EXPECT_EQ(log.back(), line);
  }
  return what;
}

void ExpectFailure(const lab::RunResult& run, const std::string& build, const std::string& what) {
  EXPECT_EQ(ExpectFailure(run, build), what);
}

}  // namespace end_to_end
