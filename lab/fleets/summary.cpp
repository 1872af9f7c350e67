#include "lab/fleets/summary.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "lab/fleets/key_set.h"
#include "lab/fleets/record_file.h"
#include "lab/household/message_kinds.h"
#include "lab/text/addresses.h"
#include "lab/text/json.h"

namespace lab::fleets {
namespace {

constexpr std::size_t kExamples = 3;

/// So many kinds of one thing are told apart; a fleet of damaged devices must not cost the host its memory.
constexpr std::size_t kDistinct = 1000;
constexpr const char* kOthers = "(others)";

/// The messages that tell of an unknown word.
constexpr std::array kWordMessages{760, 776, 795, 811, 838, 855, 869};

std::string WithoutAddresses(std::string_view text) {
  std::string plain;
  for (std::size_t place = 0; place < text.size();) {
    const auto address = MacAt(text, place);
    plain += address ? "<MAC>" : std::string(1, text[place]);
    place += address ? address->size : 1;
  }
  return plain;
}

/// The error behind what all of them begin with.
std::string ReasonIn(std::string_view error) {
  constexpr std::string_view kStart = "Failed to update config, error: ";
  const std::size_t start = error.rfind(kStart);
  if (start != std::string_view::npos) error.remove_prefix(start + kStart.size());
  return WithoutAddresses(error.substr(0, error.find('\n')));
}

/// Why an image is unusable, without its name and those of its entries.
std::string ReasonOfUnusable(const Record& record) {
  std::string_view reason = record.error;
  if (reason.starts_with(record.image)) reason.remove_prefix(record.image.size());
  while (reason.starts_with(' ')) reason.remove_prefix(1);
  for (const std::string_view before_path : {": /", " at /"}) {
    reason = reason.substr(0, reason.find(before_path));
  }
  if (const std::size_t quote = reason.find("\": "); quote != std::string_view::npos) {
    reason = reason.substr(0, quote + 1);
  }
  return WithoutAddresses(reason);
}

void Add(DeviceGroup& group, const Record& record) {
  ++group.devices;
  if (group.examples.size() < kExamples) group.examples.push_back(record.image);
}

void AddLog(Summary& summary, const Record& record) {
  std::vector<int> numbers;
  for (const NumberedLine& line : record.log) {
    LogGroup& group = summary.log[line.number];
    ++group.lines;
    if (std::ranges::find(numbers, line.number) == numbers.end()) {
      numbers.push_back(line.number);
      ++group.devices;
    }
    if (std::ranges::find(kWordMessages, line.number) == kWordMessages.end()) continue;
    const MessageKind* const kind = FindMessageKind(line.number);
    const std::string word = kind != nullptr ? MessageArgument(*kind, line.text) : "";
    const bool has_room = group.words.size() < kDistinct || group.words.contains(word);
    ++group.words[has_room ? word : kOthers];
  }
}

Descriptor OpenRecords(const std::filesystem::path& path) {
  Descriptor file(
      Checked(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC), "open", path.native()));
  struct stat status {};
  Checked(::fstat(file.Get(), &status), "examine", path.native());
  if (!S_ISREG(status.st_mode)) {
    throw std::runtime_error(path.native() + " is no regular file: records are read more than once");
  }
  return file;
}

}  // namespace

std::string CauseOf(const Record& record) {
  switch (record.outcome) {
    case Outcome::Failed:
      return record.error.empty() ? "status " + std::to_string(record.status.value_or(-1))
                                  : ReasonIn(record.error);
    case Outcome::Crashed: {
      const int signal = record.signal.value_or(0);
      const char* const name = ::sigdescr_np(signal);
      return "signal " + std::to_string(signal) + (name != nullptr ? std::string(" (") + name + ")" : "");
    }
    case Outcome::TimedOut:
      return "did not end in time";
    case Outcome::IncompleteImage:
      return record.error.substr(0, record.error.find("): ") + 1);
    case Outcome::UnusableImage:
      return ReasonOfUnusable(record);
    default:
      return "";
  }
}

void AddRecord(Summary& summary, const Record& record) {
  ++summary.devices;
  ++summary.outcomes[record.outcome];
  for (const std::string& id : record.findings) Add(summary.findings[id], record);
  if (std::string cause = CauseOf(record); !cause.empty()) {
    std::pair key{record.outcome, std::move(cause)};
    const bool has_room = summary.failures.size() < kDistinct || summary.failures.contains(key);
    if (!has_room) key.second = kOthers;
    Add(summary.failures[key], record);
  }
  AddLog(summary, record);
}

void ForEachRecord(const std::vector<std::filesystem::path>& files,
                   const std::function<void(Record&&)>& visit,
                   const std::function<void(const std::string&)>& complain) {
  // Backwards the first of a device is the last one, so the places of those that count are found in one pass
  // that keeps no more of a line than a few bytes, and visited in a second.
  struct Place {
    DeviceKey key;
    std::uint32_t file;
    std::uint64_t place;
  };
  std::vector<Place> places;
  for (std::uint32_t number = 0; number < files.size(); ++number) {
    const std::string& name = files[number].native();
    std::size_t line_number = 0;
    ForEachLine(OpenRecords(files[number]).Get(), name,
                [&](std::string_view line, std::uintmax_t place, bool is_torn) {
                  ++line_number;
                  // A torn line may end where a household's part does.
                  const auto record = is_torn && !ParseJson(line) ? std::nullopt : ParseRecord(line);
                  if (record) {
                    places.push_back({KeyOf(record->image, record->from), number, place});
                  } else {
                    complain(name + ":" + std::to_string(line_number) + " is no record of a fleet");
                  }
                });
  }
  KeySet seen;
  std::vector<bool> counts(places.size());
  for (std::size_t i = places.size(); i-- > 0;) counts[i] = seen.Insert(places[i].key);
  std::size_t next = 0;
  for (std::uint32_t number = 0; number < files.size(); ++number) {
    ForEachLine(OpenRecords(files[number]).Get(), files[number].native(),
                [&](std::string_view line, std::uintmax_t place, bool) {
                  if (next == places.size() || places[next].file != number || places[next].place != place)
                    return;
                  if (!counts[next++]) return;
                  if (auto record = ParseRecord(line)) visit(std::move(*record));
                });
  }
}

}  // namespace lab::fleets
