#include "lab/runs/collected_documents.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>

#include "lab/images/descriptor.h"
#include "lab/images/file_copy.h"

namespace lab {
namespace {

constexpr std::string_view kFolder = "/usr/kelp/etc/wifi/";

/// The document's name, empty for any other file. One that nobody expects is a document too.
std::string DocumentName(const std::string& path) {
  if (!path.starts_with(kFolder) || path.ends_with(".new")) return "";
  const std::string name = path.substr(kFolder.size());
  const bool is_document = name.find('/') == std::string::npos && name.find(".json") != std::string::npos;
  return is_document ? name : "";
}

/// Other processes, in process namespaces of their own, may put the same document there at the same time.
void Put(const std::filesystem::path& folder, const std::string& name, const std::string& content) {
  std::ostringstream hash;
  hash << std::hex << std::hash<std::string>{}(content);
  const std::filesystem::path place = folder / (hash.str() + "." + name);
  if (std::filesystem::exists(place)) return;
  std::filesystem::create_directories(folder);
  std::string part = folder / "part-XXXXXX";
  const Descriptor file(Checked(::mkstemp(part.data()), "write", part));
  WriteAll(file.Get(), content, part);
  std::filesystem::rename(part, place);
}

}  // namespace

void CollectDocuments(const Tree& before, const Tree& after) {
  const char* const folder = std::getenv("KELP_COLLECT_DOCUMENTS");
  if (folder == nullptr) return;
  for (const auto& [path, entry] : after) {
    const std::string name = DocumentName(path);
    if (name.empty() || entry.kind != Entry::Kind::File) continue;
    const auto old = before.find(path);
    if (old == before.end() || old->second.content != entry.content) Put(folder, name, entry.content);
  }
}

}  // namespace lab
