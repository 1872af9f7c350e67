#include "bench/system_calls.h"

#include <unistd.h>

#include <iterator>
#include <numeric>
#include <sstream>
#include <string_view>

#include "lab/sweeps/strace_record.h"

namespace bench {
namespace {

using lab::sweeps::SystemCall;

constexpr const char* kStrace = "/usr/bin/strace";
constexpr const char* kSummary = "/tmp/strace.summary";
constexpr const char* kRecord = "/tmp/strace.record";

/// The path that a successful openat() was given.
std::string OpenedPath(const SystemCall& call) {
  const bool opens = call.name == "openat" && call.error.empty() && call.arguments.size() > 2;
  return opens ? lab::sweeps::QuotedBytes(call.arguments[1]) : "";
}

bool IsForReading(const SystemCall& call) {
  const std::string& flags = call.arguments[2];
  return flags.starts_with("O_RDONLY") && flags.find("O_DIRECTORY") == std::string::npos &&
         flags.find("O_CREAT") == std::string::npos;
}

}  // namespace

int Total(const CallCounts& counts) {
  return std::accumulate(counts.begin(), counts.end(), 0,
                         [](int sum, const auto& count) { return sum + count.second; });
}

int Flushes(const CallCounts& counts) {
  int flushes = 0;
  for (const char* name : {"fsync", "fdatasync", "sync", "syncfs"}) {
    if (const auto count = counts.find(name); count != counts.end()) flushes += count->second;
  }
  return flushes;
}

bool CanCountSystemCalls() {
  return ::access(kStrace, X_OK) == 0;
}

CallCounts CountSystemCalls(const std::filesystem::path& image, const Contestant& contestant) {
  lab::PrivateRoot root = MakeRoot(image, contestant);
  RunContestant(root, contestant, {kStrace, "-f", "-c", "-o", kSummary});

  // "% time, seconds, microseconds a call, calls, [errors,] name", between two lines of dashes.
  std::istringstream summary(root.Read(kSummary));
  CallCounts counts;
  bool in_table = false;
  for (std::string line; std::getline(summary, line);) {
    if (line.starts_with("------")) {
      if (in_table) break;
      in_table = true;
    } else if (in_table) {
      std::istringstream fields(line);
      const std::vector<std::string> words{std::istream_iterator<std::string>(fields), {}};
      if (words.size() >= 5) counts[words.back()] += std::stoi(words[3]);
    }
  }
  return counts;
}

Recording Record(const std::filesystem::path& image, const Contestant& program) {
  std::vector<std::string> wrapper{kStrace, "-o", kRecord};
  const std::vector<std::string> options = lab::sweeps::RecordOptions();
  wrapper.insert(wrapper.end(), options.begin(), options.end());

  lab::PrivateRoot root = MakeRoot(image, program);
  Recording recording;
  recording.run = RunContestant(root, program, wrapper);
  const std::vector<SystemCall> calls = lab::sweeps::ParseRecord(root.Read(kRecord));
  const std::size_t start = lab::sweeps::FirstCallOfMain(calls);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const SystemCall& call = calls[i];
    const std::string path = OpenedPath(call);
    if (i < start) {
      if (path.find(".so") != std::string::npos && !path.ends_with("ld.so.cache")) {
        recording.libraries.push_back(path);
      }
      continue;
    }
    ++recording.from_main[call.name];
    if (path.empty() || !IsForReading(call)) continue;
    if (++recording.opens[path] == 1) recording.inputs.push_back(path);
  }
  return recording;
}

}  // namespace bench
