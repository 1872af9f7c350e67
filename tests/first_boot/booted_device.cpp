#include "tests/first_boot/booted_device.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "tests/support/full_way.h"

namespace first_boot {
namespace {

constexpr const char* kSettings = "/tmp/settings";
constexpr const char* kDeviceSettings = "/etc/kelp-first-boot.conf";
constexpr const char* kBusybox = "/usr/bin/busybox";
/// What the scripts start.
constexpr std::array kTools{"cat", "head", "logger", "ls", "mkdir", "mkfifo",
                            "mv",  "rm",   "rmdir",  "sh", "sleep"};

std::string BytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Runs one of the scripts with arguments as a shell reads them.
lab::RunResult RunScript(lab::PrivateRoot& device, Shell shell, const std::filesystem::path& script,
                         const std::string& arguments, lab::RunOptions options) {
  const std::string path = "/tmp/" + script.filename().string();
  device.Write(path, BytesOf(script), 0755);
  std::string name = "/usr/bin/dash";
  if (shell == Shell::Busybox) {
    name = "/tmp/bin/sh";
    options.host_programs = {kBusybox};
    for (const char* tool : kTools) device.ProvideLink(std::string("/tmp/bin/") + tool, kBusybox);
    options.environment = {"PATH=/tmp/bin"};
  } else {
    for (const char* tool : kTools) options.host_programs.push_back(std::string("/usr/bin/") + tool);
  }
  // The program's path, which follows, is no argument of the script then.
  options.wrapper.insert(options.wrapper.end(), {name, "-c", "exec " + name + " " + path + " " + arguments});
  return testing_support::RunOrSkip([&] { return lab::RunProgram(device, KELP_PROGRAM, {}, options); });
}

/// As many as an attempt holds room for on any of the samples, the same ones each time.
std::string RandomBytes() {
  std::mt19937 engine;
  std::string bytes(65536, '\0');
  for (char& byte : bytes) byte = static_cast<char>(engine() >> 24U);
  return bytes;
}

}  // namespace

bool IsThere(Shell shell) {
  return shell == Shell::Dash || std::filesystem::exists(kBusybox);
}

lab::PrivateRoot Upgraded(std::string_view name, std::string_view old_build) {
  lab::PrivateRoot device(std::filesystem::path(KELP_DEVICES) / name);
  device.Write(kOldBuild, old_build);
  device.Write(kRandom, RandomBytes(), 0444);
  return device;
}

lab::PrivateRoot FromTree(const lab::Tree& tree) {
  lab::PrivateRoot device;
  for (const auto& [path, entry] : tree) {
    switch (entry.kind) {
      case lab::Entry::Kind::File:
        device.Write(path, entry.content, entry.mode);
        break;
      case lab::Entry::Kind::Directory:
        device.MakeDirectory(path, entry.mode);
        break;
      case lab::Entry::Kind::Link:
        device.Link(path, entry.content);
        break;
      case lab::Entry::Kind::Other:
        device.MakeFifo(path, entry.mode);  // the one that the script listens to the program with
    }
  }
  return device;
}

lab::RunResult Boot(lab::PrivateRoot& device, Shell shell, const std::string& settings,
                    const lab::RunOptions& options) {
  device.Write(kSettings, "sync() { :; }\n" + settings);
  return RunScript(device, shell, KELP_FIRST_BOOT, kSettings, options);
}

lab::RunResult MigrateAgain(lab::PrivateRoot& device, Shell shell, const std::string& arguments,
                            const std::string& settings) {
  device.Write("/tmp/kelp-first-boot", BytesOf(KELP_FIRST_BOOT), 0755);
  device.Write(kDeviceSettings, "sync() { :; }\n" + settings);
  lab::RunResult run = RunScript(device, shell, KELP_MIGRATE_AGAIN, arguments, {});
  device.Remove(kDeviceSettings);
  return run;
}

lab::RunResult Migrate(lab::PrivateRoot& device, const std::string& build) {
  return lab::RunProgram(device, KELP_PROGRAM, {"--update-config", build});
}

lab::Tree Household(const lab::Tree& tree) {
  lab::Tree rest;
  for (const auto& [path, entry] : tree) {
    const bool is_other = path.starts_with("/tmp") || path.starts_with(kState) || path == "/etc" ||
                          path.starts_with("/dev/") || path == kDeviceSettings || path == "/var" ||
                          path.starts_with("/var/lock");
    if (!is_other) rest.emplace(path, entry);
  }
  return rest;
}

std::vector<std::string> Differing(const lab::Tree& expected, const lab::Tree& found) {
  std::vector<std::string> paths;
  for (const auto& [path, entry] : expected) {
    const auto other = found.find(path);
    if (other == found.end() || !(other->second == entry)) paths.push_back(path);
  }
  for (const auto& [path, entry] : found) {
    if (!expected.contains(path)) paths.push_back(path);
  }
  return paths;
}

std::string Result(const lab::PrivateRoot& device) {
  return device.Exists(kResult) ? device.Read(kResult) : "";
}

void ExpectQuiet(const lab::RunResult& boot) {
  EXPECT_EQ(boot.status, 0);
  EXPECT_EQ(boot.signal, 0);
  EXPECT_EQ(boot.out, "");
  EXPECT_EQ(boot.err, "");
}

}  // namespace first_boot
