// Section files, through the core utility library's interface. Input: the text.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/memory_file.h"
#include "fuzz/support/plain_text.h"
#include "platform/section_files.h"

namespace {

constexpr std::size_t kSectionsTriedInFile = 32;  // the file has just changed, so it is read anew for each

struct PlainSection {
  std::string name;
  std::vector<std::pair<std::string, std::string>> entries;
};

std::vector<PlainSection> PlainSections(const std::string& text) {
  std::vector<PlainSection> sections;
  std::size_t current = 0;  // counted from 1; none is open yet
  for (const std::string& line : fuzz::PlainLines(text)) {
    if (line.size() > 1 && line[0] == '[' && line[line.size() - 1] == ']') {
      const std::string name = fuzz::UpToNul(line.substr(1, line.size() - 2));
      for (current = 1; current <= sections.size() && sections[current - 1].name != name;) ++current;
      if (current > sections.size()) sections.push_back({name, {}});
    } else if (const auto entry = fuzz::PlainEntry(line, "#;"); entry && current > 0) {
      sections[current - 1].entries.push_back(*entry);
    }
  }
  return sections;
}

struct Free {
  void operator()(KLIBCSzList* list) const { KLIBCSzListFree(list); }
  void operator()(KLIBCSzHash* table) const { KLIBCSzHashFree(table); }
};

void CheckSection(const std::string& path, const PlainSection& expected, KLIBCSzHash* table) {
  FUZZ_CHECK(KLIBCFileGetSection(path.c_str(), expected.name.c_str(), &table) ==
             static_cast<int>(expected.entries.size()));
  std::map<std::string, std::string> first_values;
  for (const auto& [key, value] : expected.entries) {
    first_values.emplace(fuzz::UpToNul(key), fuzz::UpToNul(value));
  }
  for (const auto& [key, value] : first_values) {
    const char* found = KLIBCSzHashGetValue(table, key.c_str());
    FUZZ_CHECK(found != nullptr && found == value);
  }
  FUZZ_CHECK(KLIBCSzHashGetValue(table, "no key = like this") == nullptr);
}

void CheckFile(const std::string& path, const std::vector<PlainSection>& expected, std::size_t capacity) {
  const std::unique_ptr<KLIBCSzList, Free> names(KLIBCSzListAlloc(capacity));
  const std::unique_ptr<KLIBCSzHash, Free> table(KLIBCSzHashAlloc(capacity));
  KLIBCSzList* list = names.get();
  FUZZ_CHECK(KLIBCFileEnumSection(path.c_str(), &list) == static_cast<int>(expected.size()));
  FUZZ_CHECK(list == names.get());
  FUZZ_CHECK(KLIBCSzListGet(list, static_cast<int>(expected.size())) == nullptr);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    FUZZ_CHECK(KLIBCSzListGet(list, static_cast<int>(i)) == expected[i].name);
    if (i < kSectionsTriedInFile) CheckSection(path, expected[i], table.get());
  }
  CheckSection(path, {"no section of \n this name", {}}, table.get());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile file;
  fuzz::Input input(data, size);
  const std::string text = input.TakeRest();
  file.Write(text);

  const std::vector<PlainSection> expected = PlainSections(text);
  CheckFile(file.Path(), expected, text.size() % 64);
  return 0;
}
