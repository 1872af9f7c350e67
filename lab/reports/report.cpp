#include "lab/reports/report.h"

#include <syslog.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <vector>

#include "lab/text/utf8.h"

namespace lab {
namespace {

constexpr std::size_t kSmallFile = 16 * 1024;

std::string_view FileName(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

bool IsDocument(std::string_view path, const Entry& entry) {
  return entry.kind == Entry::Kind::File && FileName(path).find(".json") != std::string_view::npos;
}

bool IsSmallText(std::string_view bytes) {
  return !bytes.empty() && bytes.size() <= kSmallFile && bytes.find('\0') == std::string_view::npos;
}

std::string Octal(mode_t mode) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "%04o", mode & 07777U);
  return text.data();
}

/// "/etc/info.conf  (0644, 120 bytes)".
std::string Describe(const std::string& device_path, const Entry& entry, const Discretion& discretion) {
  const std::string path = discretion.Text(device_path);
  const std::string mode = Octal(entry.mode);
  switch (entry.kind) {
    case Entry::Kind::File:
      return Printable(path) + "  (" + mode + ", " + std::to_string(entry.content.size()) + " bytes)";
    case Entry::Kind::Directory:
      return Printable(path) + "/  (" + mode + ")";
    case Entry::Kind::Link:
      return Printable(path) + " -> " + Printable(discretion.Text(entry.content));
    case Entry::Kind::Other:
      break;
  }
  return Printable(path) + "  (" + mode + ", no regular file)";
}

/// Prints each line of `text` behind four spaces.
void PrintIndented(std::ostream& out, std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    out << "    " << Printable(text.substr(0, end)) << '\n';
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

void PrintHow(std::ostream& out, const RunResult& result) {
  out << "Ended:    ";
  if (result.timed_out) {
    out << "killed, because it did not end in time\n";
  } else if (result.signal != 0) {
    out << "killed by signal " << result.signal << " (" << ::strsignal(result.signal) << ")\n";
  } else {
    out << "exit status " << result.status << '\n';
  }
}

void PrintConsole(std::ostream& out, const RunResult& result, const Discretion& discretion) {
  if (result.out.empty() && result.err.empty()) out << "\nConsole: nothing\n";
  if (!result.out.empty()) out << "\nStandard output:\n";
  PrintIndented(out, discretion.Text(result.out));
  if (!result.err.empty()) out << "\nStandard error:\n";
  PrintIndented(out, discretion.Text(result.err));
}

void PrintPaths(std::ostream& out, std::string_view title, const std::vector<std::string>& paths,
                const Tree& tree, const Discretion& discretion) {
  if (paths.empty()) return;
  out << "  " << title << '\n';
  for (const std::string& path : paths) out << "    " << Describe(path, tree.at(path), discretion) << '\n';
}

void PrintFiles(std::ostream& out, const RunResult& result, const TreeDiff& diff,
                const Discretion& discretion) {
  if (diff == TreeDiff{}) {
    out << "\nFiles: as before\n";
    return;
  }
  out << "\nFiles:\n";
  PrintPaths(out, "written", diff.written, result.after, discretion);
  PrintPaths(out, "changed", diff.changed, result.after, discretion);
  if (!diff.moved.empty()) out << "  moved\n";
  for (const auto& [from, to] : diff.moved)
    out << "    " << Printable(discretion.Text(from)) << " -> " << Printable(discretion.Text(to)) << '\n';
  PrintPaths(out, "removed", diff.removed, result.before, discretion);
}

void PrintDocuments(std::ostream& out, const Tree& tree, const TreeDiff& diff, const Discretion& discretion) {
  for (const auto* paths : {&diff.written, &diff.changed}) {
    for (const std::string& path : *paths) {
      if (!IsDocument(path, tree.at(path))) continue;
      out << '\n' << Printable(discretion.Text(path)) << ":\n";
      PrintIndented(out, discretion.FileText(path, tree.at(path).content));
    }
  }
}

void PrintLog(std::ostream& out, const std::vector<LogLine>& log, const Discretion& discretion) {
  if (log.empty()) out << "\nSystem log: nothing\n";
  if (!log.empty()) out << "\nSystem log:\n";
  for (const LogLine& line : log) {
    out << "    " << std::left << std::setw(8) << SeverityName(line.severity) << Printable(line.ident) << ": "
        << Printable(discretion.LogLineText(line)) << '\n';
  }
}

}  // namespace

std::string_view SeverityName(int severity) {
  static constexpr std::array<std::string_view, 8> kNames{"emerg",   "alert",  "crit", "err",
                                                          "warning", "notice", "info", "debug"};
  return kNames[static_cast<std::size_t>(LOG_PRI(severity))];
}

void PrintReport(std::ostream& out, std::string_view command, const RunResult& result,
                 const Discretion& discretion) {
  const TreeDiff diff = Diff(result.before, result.after);
  out << "Command:  " << Printable(command) << '\n';
  PrintHow(out, result);
  PrintConsole(out, result, discretion);
  PrintFiles(out, result, diff, discretion);
  PrintDocuments(out, result.after, diff, discretion);
  PrintLog(out, result.log, discretion);
}

void PrintTree(std::ostream& out, const Tree& tree, const Discretion& discretion) {
  for (const auto& [path, entry] : tree) {
    if (entry.kind != Entry::Kind::Directory) out << Describe(path, entry, discretion) << '\n';
  }
  for (const auto& [path, entry] : tree) {
    if (entry.kind != Entry::Kind::File || !IsSmallText(entry.content)) continue;
    out << '\n' << Printable(discretion.Text(path)) << ":\n";
    PrintIndented(out, discretion.FileText(path, entry.content));
  }
}

}  // namespace lab
