#include "lab/commands/fleet_page.h"

#include <stdexcept>
#include <string>

#include "lab/fleets/summary.h"
#include "lab/page/page.h"
#include "lab/page/page_file.h"
#include "lab/text/json.h"

namespace lab::commands {
namespace {

/// With the members in the order of their names, as a page takes them at the least cost.
std::string DeviceText(const fleets::Record& record) {
  JsonWriter json;
  json.BeginObject()
      .Texts("archived", record.archived)
      .Texts("documents", record.documents)
      .Member("error", record.error)
      .Texts("findings", record.findings)
      .Member("from", record.from);
  if (!record.household.empty()) json.Name("household").AddJson(record.household);
  json.Member("image", record.image).Name("log").BeginArray();
  for (const NumberedLine& line : record.log) {
    json.BeginObject().Member("number", line.number).Member("severity", line.severity);
    json.Member("text", line.text).End();
  }
  return json.End()
      .Member("milliseconds", record.milliseconds)
      .Member("outcome", OutcomeName(record.outcome))
      .Member("schema", 1)
      .Member("signal", record.signal)
      .Member("status", record.status)
      .End()
      .Text();
}

}  // namespace

void WriteFleetPage(const std::filesystem::path& html, const std::vector<std::filesystem::path>& files,
                    const std::function<void(const std::string&)>& complain) {
  page::Page page(page::Kind::Fleet);
  const auto add = [&](const fleets::Record& record) {
    try {
      page.Add(DeviceText(record));
    } catch (const std::invalid_argument&) {
      complain("the household of " + record.image + " is no JSON, and is not in the page");
    }
  };
  fleets::ForEachRecord(files, add, [](const std::string&) {});
  page::WritePageFile(html, page.Html());
}

}  // namespace lab::commands
