#include "bench/contestant.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "lab/images/tree.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::minutes kPatience{30};  // a large device behind valgrind takes its time

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.native());
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Whether the path is where the lab and the libraries put files of their own.
bool IsOfNoInterest(std::string_view path) {
  return path.starts_with("/tmp/") || path.starts_with("/var/lock/");
}

std::vector<std::string> AccessPointFiles(const fs::path& image) {
  const fs::path folder = "usr/kelp/etc/wifi";
  std::vector<std::string> paths;
  for (const auto& entry : fs::directory_iterator(image / folder)) {
    const std::string name = entry.path().filename();
    if (name.starts_with("wifi_ap_")) paths.push_back("/" / folder / name);
  }
  return paths;
}

}  // namespace

fs::path ProgramFolder() {
  return fs::read_symlink("/proc/self/exe").parent_path();
}

Contestant MakeProgram(const Device& device) {
  return {"program", ProgramFolder() / "kelpwifiupdater", {"--update-config", device.build_number}, {}};
}

Contestant MakePeer() {
  const fs::path folder = KELP_PEER;
  return {
      "shell script", folder / "migrate.sh", {}, {{"/usr/sbin/legacy.jq", ReadFile(folder / "legacy.jq")}}};
}

Contestant MakeEmpty() {
  return {"empty", ProgramFolder() / "bench-empty", {}, {}};
}

Contestant MakeFloor(const std::vector<std::string>& inputs, const lab::RunResult& run) {
  Contestant floor{"floor", ProgramFolder() / "bench-floor", {}, {}};
  const auto add = [&](std::initializer_list<std::string> words) {
    floor.arguments.insert(floor.arguments.end(), words);
  };
  for (const std::string& input : inputs) add({"read", input});

  const lab::TreeDiff diff = lab::Diff(run.before, run.after);
  std::vector<std::string> directories;
  for (const std::string& path : diff.written) {
    if (IsOfNoInterest(path)) continue;
    const lab::Entry& entry = run.after.at(path);
    if (entry.kind == lab::Entry::Kind::File) {
      add({"write", path, entry.content});
    } else {
      directories.push_back(path);
    }
  }
  for (const std::string& path : directories) add({"make", path, path.substr(0, path.rfind('/') + 1)});
  for (const lab::TreeDiff::Move& move : diff.moved) add({"move", move.from, move.to});
  return floor;
}

Contestant OnSparseDevice(const fs::path& image, Contestant contestant) {
  for (const std::string& path : AccessPointFiles(image)) contestant.files[path] = "";
  return contestant;
}

Contestant OnBareDevice(const fs::path& image, Contestant contestant) {
  contestant.missing = AccessPointFiles(image);
  contestant.status = 1;
  return contestant;
}

lab::PrivateRoot MakeRoot(const fs::path& image, const Contestant& contestant) {
  lab::PrivateRoot root(image);
  root.Write("/dev/null", "", 0666);  // as good as a device for those who only write to it
  for (const auto& [path, bytes] : contestant.files) root.Write(path, bytes);
  for (const std::string& path : contestant.missing) root.Remove(path);
  return root;
}

lab::RunResult RunContestant(lab::PrivateRoot& root, const Contestant& contestant,
                             const std::vector<std::string>& wrapper, bool with_proc) {
  lab::RunOptions options;
  options.wrapper = wrapper;
  options.with_proc = with_proc;
  options.timeout = kPatience;
  lab::RunResult result = lab::RunProgram(root, contestant.program, contestant.arguments, options);
  if (result.status == contestant.status && result.signal == 0 && !result.timed_out) return result;
  throw std::runtime_error("the " + contestant.name + " failed on this device, status " +
                           std::to_string(result.status) + ", signal " + std::to_string(result.signal) +
                           ": " + result.out + result.err);
}

}  // namespace bench
