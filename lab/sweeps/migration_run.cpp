#include "lab/sweeps/migration_run.h"

#include <fcntl.h>
#include <sys/file.h>

#include <chrono>
#include <ctime>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

#include "lab/images/descriptor.h"
#include "lab/images/image.h"
#include "lab/images/private_root.h"
#include "lab/runs/collected_documents.h"
#include "lab/runs/program_run.h"
#include "lab/sweeps/documents.h"

namespace lab::sweeps {
namespace {

constexpr std::chrono::seconds kHang{20};
constexpr std::chrono::seconds kHangWithLock{60};  // which is waited for some seconds for each of the radios
constexpr mode_t kExecutable = 0755;

bool IsScratch(const std::string& path) {
  return path == "/tmp" || path.starts_with("/tmp/");
}

// Every private root has these, whether the device has them or not.
bool IsFolderOfEveryRoot(const std::string& path) {
  return path == "/dev" || path == "/etc" || path == "/var" || path == "/var/lock";
}

std::string BytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The program reads a file anew that has changed within the present tick of the file system's clock: without
/// this, the number of its calls would depend on how fast the device was laid out.
void WaitForNextTick() {
  timespec start{};
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME_COARSE, &start);
  do {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
  } while (now.tv_sec == start.tv_sec && now.tv_nsec == start.tv_nsec);
}

/// Takes the boot environment's lock, as another tool would.
Descriptor HoldLock(PrivateRoot& root) {
  if (!root.Exists(kBootEnvironmentLock)) root.Write(kBootEnvironmentLock, "");
  Descriptor lock = root.Open(kBootEnvironmentLock, O_RDWR | O_CLOEXEC);
  Checked(::flock(lock.Get(), LOCK_EX | LOCK_NB), "lock", kBootEnvironmentLock);
  return lock;
}

}  // namespace

Programs Programs::BesideThisOne(const std::filesystem::path& migration) {
  const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  Programs programs{migration.empty() ? folder / "kelpwifiupdater" : migration,
                    folder / "kelp-failing-services", folder / "tamper"};
  for (const auto& program : {programs.migration, programs.tamper}) {
    if (!std::filesystem::exists(program))
      throw std::runtime_error(program.string() + " is missing: build it");
  }
  return programs;
}

Device ReadDevice(const std::filesystem::path& image, int build_number) {
  return {ReadImage(image), build_number};
}

MigrationRun Migrate(const Device& device, const std::filesystem::path& program, const Manner& manner) {
  PrivateRoot root(device.files);
  for (const auto& [path, helper] : manner.helpers) root.Write(path, BytesOf(helper), kExecutable);

  const Descriptor lock = manner.obstruction.held_lock ? HoldLock(root) : Descriptor();

  WaitForNextTick();

  RunOptions options;
  options.wrapper = manner.wrapper;
  options.timeout = manner.obstruction.held_lock ? kHangWithLock : kHang;
  options.stuck_log = manner.obstruction.stuck_log;
  if (manner.obstruction.full_console) options.console = Console::Full;
  options.environment.insert(options.environment.end(), manner.environment.begin(), manner.environment.end());
  const RunResult result =
      RunProgram(root, program, {"--update-config", std::to_string(device.build_number)}, options);

  MigrationRun run;
  run.outcome = {result.status, result.signal, result.timed_out, result.out, result.err, {}, {}};
  for (const LogLine& line : result.log) {
    run.outcome.log.push_back(std::to_string(line.severity) + ": " + line.message);
  }
  CollectDocuments(result.before, result.after);
  run.outcome.files = WithoutLabFiles(result.after);
  for (const auto& [path, entry] : result.after) {
    if (IsScratch(path)) run.scratch.emplace(path, entry);
  }
  return run;
}

Tree WithoutLabFiles(const Tree& files) {
  Tree rest;
  for (const auto& [path, entry] : files) {
    const bool is_of_lab = IsScratch(path) || IsFolderOfEveryRoot(path);
    if (!is_of_lab && !IsLockOfBootEnvironment(path)) rest.emplace(path, entry);
  }
  return rest;
}

std::vector<SystemCall> RecordMigration(const Device& device, const Programs& programs,
                                        const std::vector<std::string>& options) {
  Manner manner;
  manner.wrapper = {programs.strace};
  for (const std::string& option : RecordOptions()) manner.wrapper.push_back(option);
  manner.wrapper.insert(manner.wrapper.end(), {"-o", kRecord});
  manner.wrapper.insert(manner.wrapper.end(), options.begin(), options.end());
  const MigrationRun run = Migrate(device, programs.migration, manner);
  return ParseRecord(run.scratch.at(kRecord).content);
}

}  // namespace lab::sweeps
