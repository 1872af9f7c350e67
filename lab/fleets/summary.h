#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "lab/fleets/record.h"

namespace lab::fleets {

/// Some devices that have a thing in common.
struct DeviceGroup {
  std::size_t devices = 0;
  /// The images of the first three.
  std::vector<std::string> examples;
};

/// The lines of the log with one number.
struct LogGroup {
  std::size_t lines = 0;
  std::size_t devices = 0;
  /// For those that tell of an unknown word: the words and how often.
  std::map<std::string, std::size_t> words;
};

/// What many records come to.
struct Summary {
  std::size_t devices = 0;
  std::map<Outcome, std::size_t> outcomes;
  /// By their ids.
  std::map<std::string, DeviceGroup> findings;
  /// Devices that did not migrate, by outcome and cause.
  std::map<std::pair<Outcome, std::string>, DeviceGroup> failures;
  /// By their numbers.
  std::map<int, LogGroup> log;
};

void AddRecord(Summary& summary, const Record& record);

/// Why a device did not migrate, told alike for devices that differ in name and addresses alone; empty where
/// it did.
std::string CauseOf(const Record& record);

/// Calls `visit` with the records of all the files, in order. Of a device that has several only the last
/// counts. Lines that are no records are left out, and `complain` is told of them. Throws std::runtime_error
/// where a file cannot be read, or not twice.
void ForEachRecord(const std::vector<std::filesystem::path>& files,
                   const std::function<void(Record&&)>& visit,
                   const std::function<void(const std::string&)>& complain);

void PrintSummary(std::ostream& out, const Summary& summary);

/// The same as a JSON object, with a line end.
std::string SummaryJson(const Summary& summary);

/// A report as CI servers read it, a test case a device, from two passes over the records.
void WriteJUnit(std::ostream& out, const Summary& summary,
                const std::function<void(const std::function<void(Record&&)>&)>& for_each_record);

}  // namespace lab::fleets
