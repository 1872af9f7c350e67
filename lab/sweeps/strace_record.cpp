#include "lab/sweeps/strace_record.h"

#include <cstdlib>
#include <map>
#include <set>
#include <stdexcept>

namespace lab::sweeps {
namespace {

constexpr int kHexadecimal = 16;

std::runtime_error NotUnderstood(std::string_view line) {
  return std::runtime_error("no system call as strace writes it: " + std::string(line.substr(0, 200)));
}

bool IsDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

/// The place of the parenthesis that closes the arguments which begin at `place`.
std::size_t EndOfArguments(std::string_view line, std::size_t place, std::vector<std::string>& arguments) {
  int depth = 0;
  bool quoted = false;
  std::size_t start = place;
  const auto take = [&](std::size_t end) {
    while (start < end && line[start] == ' ') ++start;
    if (start < end) arguments.emplace_back(line.substr(start, end - start));
    start = end + 1;
  };
  for (; place < line.size(); ++place) {
    const char byte = line[place];
    if (byte == '"') {
      quoted = !quoted;  // no escaped quotes: every byte of a string is written in hexadecimal
    } else if (quoted) {
      continue;
    } else if (byte == '(' || byte == '{' || byte == '[') {
      ++depth;
    } else if (depth > 0 && (byte == ')' || byte == '}' || byte == ']')) {
      --depth;
    } else if (byte == ',' && depth == 0) {
      take(place);
    } else if (byte == ')') {
      take(place);
      return place;
    }
  }
  throw NotUnderstood(line);
}

SystemCall ParseLine(std::string_view line) {
  std::size_t place = 0;
  while (place < line.size() && (IsDigit(line[place]) || line[place] == ' ')) ++place;  // the process id
  const std::size_t open = line.find('(', place);
  if (open == std::string_view::npos || open == place) throw NotUnderstood(line);

  SystemCall call;
  call.name = line.substr(place, open - place);
  const std::size_t close = EndOfArguments(line, open + 1, call.arguments);
  const std::size_t equals = line.find("= ", close);
  if (equals == std::string_view::npos) throw NotUnderstood(line);
  const std::string result(line.substr(equals + 2));
  if (!result.starts_with('?'))
    call.result = static_cast<std::int64_t>(std::strtoull(result.c_str(), nullptr, 0));
  if (result.starts_with("-1 E")) {
    call.result = -1;
    call.error = result.substr(3, result.find(' ', 3) - 3);
  }
  call.injected = result.ends_with("(INJECTED)");
  return call;
}

bool IsAboutProcess(std::string_view line) {
  return line.find("+++ ") != std::string_view::npos || line.find("--- ") != std::string_view::npos;
}

}  // namespace

std::vector<std::string> RecordOptions() {
  return {"-f", "-qq", "-xx", "-s", "1048576"};
}

std::vector<SystemCall> ParseRecord(std::string_view text) {
  std::vector<SystemCall> calls;
  std::map<std::string, int> ordinals;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line.empty() || IsAboutProcess(line.substr(0, 40))) continue;
    SystemCall call = ParseLine(line);
    call.ordinal = ++ordinals[call.name];
    calls.push_back(std::move(call));
  }
  return calls;
}

std::size_t FirstCallOfMain(const std::vector<SystemCall>& calls) {
  const auto looks_at_streams = [](const SystemCall& call) {
    return call.name == "poll" || call.name == "ppoll";
  };
  const auto ignores_pipe = [](const SystemCall& call) {
    return call.name == "rt_sigaction" && !call.arguments.empty() && call.arguments[0] == "SIGPIPE";
  };
  for (std::size_t i = 0; i + 1 < calls.size(); ++i) {
    if (looks_at_streams(calls[i]) && ignores_pipe(calls[i + 1])) return i;
  }
  throw std::runtime_error("the record does not show where main begins");
}

std::string SubjectOf(const SystemCall& call) {
  static const std::set<std::string_view> about_descriptors{
      "read", "write", "pread64", "pwrite64", "close", "fsync", "flock", "fchmod", "sendto", "fdatasync"};
  if (about_descriptors.contains(call.name)) return call.arguments.at(0);
  std::string paths;
  for (const std::string& argument : call.arguments) {
    if (argument.starts_with("\"\\x")) paths += QuotedBytes(argument) + " ";
  }
  return call.name == "getrandom" ? "" : paths;
}

std::string QuotedBytes(std::string_view argument) {
  if (argument.ends_with("...")) throw std::runtime_error("a string was cut in the record");
  if (argument.size() < 2 || argument.front() != '"' || argument.back() != '"') throw NotUnderstood(argument);
  argument = argument.substr(1, argument.size() - 2);
  std::string bytes;
  bytes.reserve(argument.size() / 4);
  while (!argument.empty()) {
    if (argument.size() < 4 || !argument.starts_with("\\x")) throw NotUnderstood(argument);
    bytes +=
        static_cast<char>(std::strtoul(std::string(argument.substr(2, 2)).c_str(), nullptr, kHexadecimal));
    argument.remove_prefix(4);
  }
  return bytes;
}

}  // namespace lab::sweeps
