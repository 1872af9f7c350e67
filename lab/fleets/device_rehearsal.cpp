#include "lab/fleets/device_rehearsal.h"

#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "lab/household/findings.h"
#include "lab/household/known_files.h"
#include "lab/household/message_kinds.h"
#include "lab/images/boot_variables.h"
#include "lab/images/image.h"
#include "lab/reports/discretion.h"
#include "lab/reports/household_json.h"
#include "lab/reports/household_report.h"
#include "lab/text/utf8.h"

namespace lab::fleets {
namespace {

/// What a run may write beside what its image holds.
constexpr std::uintmax_t kRoomToWrite = std::uintmax_t{64} << 20;

/// How many bytes of standard error and of the log's texts a record has.
constexpr std::size_t kKeptOfError = std::size_t{64} << 10;
constexpr std::size_t kKeptOfLog = std::size_t{256} << 10;

/// The most that a file, a link or a folder takes besides its bytes: a page that is not full.
constexpr std::uintmax_t kRoomOfEntry = 4096;

std::string_view NameOf(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::vector<std::string> DocumentsOf(const RunResult& run) {
  std::vector<std::string> paths;
  for (const auto& [path, entry] : run.after) {
    const bool is_document = entry.kind == Entry::Kind::File &&
                             path == kWifiFolder + std::string(NameOf(path)) &&
                             NameOf(path).find(".json") != std::string_view::npos;
    if (!is_document) continue;
    const auto former = run.before.find(path);
    if (former == run.before.end() || former->second != entry) paths.push_back(path);
  }
  return paths;
}

std::vector<std::string> ArchivedOf(const RunResult& run) {
  std::vector<std::string> paths;
  for (const auto& [path, entry] : run.before) {
    if (entry.kind == Entry::Kind::Directory || run.after.contains(path)) continue;
    const auto archived = run.after.find(std::string(kArchiveFolder).append(NameOf(path)));
    if (archived != run.after.end() && archived->second.content == entry.content) paths.push_back(path);
  }
  return paths;
}

/// The ids of what was found, each once, whether by itself or in groups.
template <typename Findings>
std::vector<std::string> IdsOf(const Findings& findings) {
  std::vector<std::string> ids;
  for (const auto& finding : findings) {
    if (std::ranges::find(ids, finding.kind->id) == ids.end()) ids.emplace_back(finding.kind->id);
  }
  return ids;
}

/// Adds the household before and after, as the report of one run has it, and the findings in it.
void AddHousehold(Record& record, const DeviceSource& source, const RunResult& run) {
  Discretion discretion({}, run.before);
  discretion.Learn(run.after);
  const HouseholdReport report = Tell(source.image, source.from, run, discretion);
  record.findings = IdsOf(report.findings);
  record.household = ToJson(report);
}

/// Whether a line is one of the messages that tell no value.
bool IsFixed(const NumberedLine& line) {
  const MessageKind* const kind = FindMessageKind(line.number);
  return kind != nullptr && line.text == kind->format;
}

/// Masks the household's secrets, stored and plain, in what the program said.
void MaskSecrets(Record& record, const RunResult& run) {
  // To learn them costs something, and most devices say nothing that could hold one.
  if (record.error.empty() && std::ranges::all_of(record.log, IsFixed)) return;
  Discretion discretion({}, run.before);
  discretion.Learn(run.after);
  record.error = discretion.Text(record.error);
  for (NumberedLine& line : record.log) line.text = discretion.LogText(line);
}

/// Leaves of what a program gone wild said as much as anybody reads.
void Shorten(Record& record) {
  if (record.error.size() > kKeptOfError) {
    const std::size_t more = record.error.size() - kKeptOfError;
    record.error.resize(kKeptOfError);
    record.error += "\n(" + std::to_string(more) + " bytes more)";
  }
  std::size_t size = 0;
  const auto end = std::ranges::find_if(record.log, [&](const NumberedLine& line) {
    size += line.text.size();
    return size > kKeptOfLog;
  });
  if (end == record.log.end()) return;
  const auto more = record.log.end() - end;
  record.log.erase(end, record.log.end());
  record.log.push_back({0, LOG_NOTICE, "(" + std::to_string(more) + " lines more)"});
}

/// Whether an error tells of the host, and not of what an image has where a run needs something else.
bool IsOfTheHost(const std::system_error& error) {
  const int number = error.code().value();
  return number == ENOMEM || number == ENOSPC || number == EMFILE || number == ENFILE || number == EAGAIN;
}

/// The absolute path of a file that a list gives.
std::string ListedPath(const std::string& path) {
  if (!path.starts_with('/')) throw UnusableImage("is given a file that has no absolute path: " + path);
  return DevicePathOf(std::string_view(path).substr(1));
}

}  // namespace

void RequireOverlays(const RehearsalOptions& options) {
  for (const std::filesystem::path& overlay : options.overlays) ReadImage(overlay, options.image_limits);
}

Record DeviceRehearsal::Rehearse(const DeviceSource& source) {
  RunResult run;
  return Rehearse(source, run);
}

Record DeviceRehearsal::Rehearse(const DeviceSource& source, RunResult& run) {
  Record record;
  record.image = ValidUtf8(source.image);
  record.from = ValidUtf8(source.from);
  try {
    LayOut(Read(source));
    run = bench_->Run({"--update-config", source.from}, options_.limit);
  } catch (const UnusableImage& error) {
    record.error = error.what();
    return record;
  } catch (const std::system_error& error) {
    bench_.reset();
    if (IsOfTheHost(error)) throw;
    record.error = source.image + " cannot be rehearsed: " + error.what();
    return record;
  }
  ClearWorkbench();

  Verdict verdict = Judge(run);
  record.outcome = verdict.outcome;
  if (run.signal == 0) record.status = run.status;
  if (run.signal != 0) record.signal = run.signal;
  record.error = std::move(verdict.error);
  record.log = std::move(verdict.log);
  MaskSecrets(record, run);
  Shorten(record);
  record.documents = DocumentsOf(run);
  record.archived = ArchivedOf(run);
  record.milliseconds = run.duration.count();
  if (options_.with_household) {
    AddHousehold(record, source, run);
  } else {
    record.findings = IdsOf(DetectFindings(run, source.from));
  }
  return record;
}

Tree DeviceRehearsal::Read(const DeviceSource& source) const {
  TreeBuilder tree(options_.image_limits);
  ReadImage(tree, source.image);
  for (const std::filesystem::path& overlay : options_.overlays) {
    tree.BeginOverlay();
    ReadImage(tree, overlay);
  }
  try {
    tree.BeginOverlay();
    for (const auto& [path, text] : source.files) tree.AddFile(ListedPath(path), 0644, text);
    Tree device = tree.Take();
    SetBootVariables(device, source.boot);
    return device;
  } catch (const UnusableImage& error) {
    throw UnusableImage(source.image + " " + error.what());
  }
}

void DeviceRehearsal::LayOut(const Tree& device) {
  if (!bench_) MakeWorkbench(Workbench::Fittings::First);
  try {
    WriteTree(device, bench_->Device().Directory());
  } catch (const MountPointConflict&) {
    // A device with something of its own where the host's folders go is laid out before they come.
    MakeWorkbench(Workbench::Fittings::Last);
    WriteTree(device, bench_->Device().Directory());
  }
}

void DeviceRehearsal::ClearWorkbench() {
  try {
    if (bench_->Clear()) return;
  } catch (const std::system_error&) {
    // What cannot be removed goes away with the whole.
  }
  bench_.reset();
}

void DeviceRehearsal::MakeWorkbench(Workbench::Fittings fittings) {
  bench_.reset();
  const ImageLimits& limits = options_.image_limits;
  bench_ = std::make_unique<Workbench>(options_.program,
                                       limits.bytes + limits.entries * kRoomOfEntry + kRoomToWrite, fittings);
}

}  // namespace lab::fleets
