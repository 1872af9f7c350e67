#include "tests/first_boot/booted_device.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/full_way.h"

namespace first_boot {
namespace {

constexpr const char* kScript = "/tmp/kelp-first-boot";
constexpr const char* kSettings = "/tmp/settings";
constexpr const char* kBusybox = "/usr/bin/busybox";
/// What the script starts.
constexpr std::array kTools{"mkdir", "mv", "rm", "sh", "sleep"};

std::string BytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

bool IsThere(Shell shell) {
  return shell == Shell::Dash || std::filesystem::exists(kBusybox);
}

lab::PrivateRoot Upgraded(std::string_view name, std::string_view old_build) {
  lab::PrivateRoot device(std::filesystem::path(KELP_DEVICES) / name);
  device.Write(kOldBuild, old_build);
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
        ADD_FAILURE() << "cannot lay out " << path;
    }
  }
  return device;
}

lab::RunResult Boot(lab::PrivateRoot& device, Shell shell, const std::string& settings,
                    const lab::RunOptions& options) {
  device.Write(kScript, BytesOf(KELP_FIRST_BOOT), 0755);
  device.Write(kSettings, "sync() { :; }\n" + settings);
  lab::RunOptions in_shell = options;
  if (shell == Shell::Dash) {
    in_shell.wrapper.insert(in_shell.wrapper.end(), {"/usr/bin/dash", kScript, kSettings});
    for (const char* tool : kTools) in_shell.host_programs.push_back(std::string("/usr/bin/") + tool);
  } else {
    in_shell.host_programs = {kBusybox};
    for (const char* tool : kTools) {
      device.ProvideLink(std::string("/tmp/bin/") + tool, kBusybox);
    }
    in_shell.environment = {"PATH=/tmp/bin"};
    in_shell.wrapper.insert(in_shell.wrapper.end(), {kBusybox, "sh", kScript, kSettings});
  }
  // What the wrapper is given behind its settings, the program's path, it does not look at.
  return testing_support::RunOrSkip([&] { return lab::RunProgram(device, KELP_PROGRAM, {}, in_shell); });
}

lab::RunResult Migrate(lab::PrivateRoot& device, const std::string& build) {
  return lab::RunProgram(device, KELP_PROGRAM, {"--update-config", build});
}

lab::Tree Household(const lab::Tree& tree) {
  lab::Tree rest;
  for (const auto& [path, entry] : tree) {
    const bool is_other = path.starts_with("/tmp") || path.starts_with(kState) || path == "/etc" ||
                          path == "/var" || path.starts_with("/var/lock");
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
