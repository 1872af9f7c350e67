#include "tests/lab/experiments/migration_map.h"

#include <fstream>

namespace lab_test {
namespace {

Names NamesIn(const std::string& text) {
  Names names;
  for (std::size_t start = text.find('`'); start != std::string::npos;) {
    const std::size_t end = text.find('`', start + 1);
    if (end == std::string::npos) break;
    names.insert(text.substr(start + 1, end - start - 1));
    start = text.find('`', end + 1);
  }
  return names;
}

}  // namespace

std::vector<Passage> PassagesOfTheMap() {
  std::ifstream map(KELP_SOURCE "/docs/migration-map.md");
  std::vector<Passage> passages;
  std::string paragraph;
  const auto end_paragraph = [&] {
    if (!paragraph.empty()) passages.push_back({paragraph, NamesIn(paragraph)});
    paragraph.clear();
  };
  for (std::string line; std::getline(map, line);) {
    if (line.empty() || line.starts_with('|')) end_paragraph();
    if (line.starts_with('|')) {
      passages.push_back({line, NamesIn(line)});
    } else if (!line.empty()) {
      paragraph += line + " ";
    }
  }
  end_paragraph();
  return passages;
}

}  // namespace lab_test
