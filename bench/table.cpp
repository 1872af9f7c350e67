#include <algorithm>
#include <array>
#include <functional>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string_view>

#include "bench/report.h"

namespace bench {
namespace {

constexpr int kLabelWidth = 30;
constexpr int kColumnWidth = 14;
constexpr double kKibi = 1024;

std::string Fixed(double value, int decimals) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(decimals) << value;
  return text.str();
}

template <typename T>
std::string OrDash(const std::optional<T>& value, const std::function<std::string(const T&)>& print) {
  return value ? print(*value) : "-";
}

/// Digits in groups of three.
std::string Grouped(std::int64_t value) {
  const std::string digits = std::to_string(value);
  std::string text;
  for (std::size_t place = 0; place < digits.size(); ++place) {
    if (place > 0 && (digits.size() - place) % 3 == 0) text += ',';
    text += digits[place];
  }
  return text;
}

std::string KibiBytes(const std::int64_t& bytes) {
  return Fixed(static_cast<double>(bytes) / kKibi, 1);
}

class Table {
 public:
  Table(std::ostream& out, const Comparison& comparison)
      : out_(out),
        contestants_{&comparison.program, &comparison.peer, &comparison.floor, &comparison.empty} {}

  void Row(std::string_view label, const std::function<std::string(const Figures&)>& cell) {
    out_ << std::left << std::setw(kLabelWidth) << label << std::right;
    for (const Figures* figures : contestants_) out_ << std::setw(kColumnWidth) << cell(*figures);
    out_ << '\n';
  }

 private:
  std::ostream& out_;
  std::array<const Figures*, 4> contestants_;
};

/// The value of each, and what part it is of the program's.
void PrintTimes(Table& table, const Comparison& comparison, const std::string& storage,
                std::optional<Times> Figures::*times) {
  const std::optional<Times>& own = comparison.program.*times;
  if (!own) return;
  const auto rows = [&](const std::string& label, double Times::*value) {
    table.Row(label + ", " + storage + ", ms",
              [&](const Figures& figures) { return Fixed((*(figures.*times)).*value, 2); });
    table.Row("  to the program's",
              [&](const Figures& figures) { return Fixed((*(figures.*times)).*value / (*own).*value, 2); });
  };
  rows("CPU time", &Times::cpu_milliseconds);
  rows("wall time", &Times::wall_milliseconds);
}

void PrintCosts(std::ostream& out, const Comparison& comparison) {
  Table table(out, comparison);
  table.Row("", [](const Figures& figures) { return figures.name; });
  PrintTimes(table, comparison, "in memory", &Figures::in_memory);
  PrintTimes(table, comparison, "on disk", &Figures::on_disk);
  table.Row("instructions", [](const Figures& f) { return OrDash<std::int64_t>(f.instructions, Grouped); });
  if (const auto own = comparison.program.instructions) {
    table.Row("  to the program's", [&](const Figures& f) {
      return Fixed(static_cast<double>(f.instructions.value_or(0)) / static_cast<double>(*own), 2);
    });
  }
  table.Row("system calls", [](const Figures& f) {
    return OrDash<CallCounts>(f.calls, [](const CallCounts& calls) { return Grouped(Total(calls)); });
  });
  table.Row("  flushes", [](const Figures& f) {
    return OrDash<CallCounts>(f.calls, [](const CallCounts& calls) { return Grouped(Flushes(calls)); });
  });
  table.Row("peak memory, KiB", [](const Figures& f) { return Grouped(f.peak_kilobytes); });
  table.Row("stripped size, KiB",
            [](const Figures& f) { return OrDash<std::int64_t>(f.stripped_bytes, KibiBytes); });
  table.Row("  with its libraries",
            [](const Figures& f) { return OrDash<std::int64_t>(f.bytes_with_libraries, KibiBytes); });
}

void PrintCalls(std::ostream& out, const Comparison& comparison) {
  if (!comparison.program.calls) {
    out << "\nNo system calls were counted: strace is missing (scripts/setup bench installs it).\n";
    return;
  }
  out << "\nThe program's system calls, " << Total(comparison.calls_from_main) << " from main on and "
      << Total(*comparison.program.calls) << " with the loader's\n";
  std::vector<std::pair<int, std::string>> calls;
  for (const auto& [name, count] : *comparison.program.calls) calls.emplace_back(count, name);
  std::sort(calls.rbegin(), calls.rend());
  for (const auto& [count, name] : calls) {
    const auto from_main = comparison.calls_from_main.find(name);
    out << std::setw(8) << (from_main == comparison.calls_from_main.end() ? 0 : from_main->second)
        << std::setw(8) << count << "  " << name << '\n';
  }
  out << "\nOpens of each input file\n";
  for (const auto& [path, count] : comparison.opens) {
    out << std::setw(8) << count << "  " << path << '\n';
  }
}

void PrintOthers(std::ostream& out, const Comparison& comparison) {
  if (comparison.others.empty()) return;
  const auto row = [&](const std::string& name, const std::string& instructions, const std::string& ratio,
                       const std::string& calls) {
    out << std::left << std::setw(kLabelWidth) << name << std::right << std::setw(kColumnWidth)
        << instructions << std::setw(kColumnWidth) << ratio << std::setw(kColumnWidth) << calls << '\n';
  };
  const auto print = [&](const std::string& name, const std::optional<std::int64_t>& instructions,
                         const std::optional<CallCounts>& calls) {
    const auto to_empty = [&](const std::int64_t& count) {
      return Fixed(
          static_cast<double>(count) / static_cast<double>(comparison.empty.instructions.value_or(1)), 2);
    };
    row(name, OrDash<std::int64_t>(instructions, Grouped), OrDash<std::int64_t>(instructions, to_empty),
        OrDash<CallCounts>(calls, [](const CallCounts& counts) { return Grouped(Total(counts)); }));
  };
  out << '\n';
  row("The program on", "instructions", "to the empty", "system calls");
  print("the device as it is", comparison.program.instructions, comparison.program.calls);
  for (const OtherDevice& other : comparison.others) print(other.name, other.instructions, other.calls);
}

void PrintGrowth(std::ostream& out, const Comparison& comparison) {
  if (comparison.growth.empty()) return;
  out << "\n"
      << std::setw(10) << "stations" << std::setw(18) << "instructions" << std::setw(16) << "to step before"
      << std::setw(18) << "peak memory, KiB" << '\n';
  for (const GrowthStep& step : comparison.growth) {
    out << std::setw(10) << Grouped(step.stations) << std::setw(18) << Grouped(step.instructions)
        << std::setw(16) << OrDash<double>(step.ratio, [](const double& ratio) { return Fixed(ratio, 2); })
        << std::setw(18) << Grouped(step.peak_kilobytes) << '\n';
  }
  out << "(to step before: beyond the instructions of a run without stations)\n";
}

void PrintTargets(std::ostream& out, const Comparison& comparison) {
  out << "\nTargets\n";
  for (const Target& target : Targets(comparison)) {
    const std::string value = OrDash<double>(
        target.value, [&](const double& measured) { return Fixed(measured, target.decimals); });
    out << std::setw(10) << value << "  " << std::left << std::setw(62) << target.text << std::right
        << (target.is_least ? " at least " : " at most ") << Fixed(target.bound, target.decimals) << ": "
        << (target.IsMet() ? "met"
            : target.value ? "MISSED"
                           : "not measured")
        << '\n';
  }
}

}  // namespace

void PrintTable(std::ostream& out, const Comparison& comparison) {
  out << "\n"
      << comparison.device << ", medians over " << comparison.runs << " runs of each, taken in turn\n\n";
  PrintCosts(out, comparison);
  if (!comparison.program.instructions) {
    out << "\nNo instructions were counted: valgrind is missing (scripts/setup bench installs it).\n";
  }
  PrintCalls(out, comparison);
  PrintOthers(out, comparison);
  PrintGrowth(out, comparison);
  PrintTargets(out, comparison);
}

}  // namespace bench
