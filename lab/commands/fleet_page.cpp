#include "lab/commands/fleet_page.h"

#include <string>
#include <string_view>

#include "lab/fleets/summary.h"
#include "lab/page/page.h"
#include "lab/page/page_file.h"

namespace lab::commands {

void WriteFleetPage(const std::filesystem::path& html, const std::vector<std::filesystem::path>& files) {
  page::Page page(page::Kind::Fleet);
  const auto add = [&](const fleets::Record& record) {
    page.Add(std::string_view(fleets::RecordLine(record)));
  };
  fleets::ForEachRecord(files, add, [](const std::string&) {});
  page::WritePageFile(html, page.Html());
}

}  // namespace lab::commands
