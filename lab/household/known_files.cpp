#include "lab/household/known_files.h"

#include <algorithm>
#include <charconv>

#include "lab/household/legacy_words.h"

namespace lab {

bool IsDocumentName(std::string_view name) {
  const auto is_name = [=](const char* document) { return name == document; };
  return std::ranges::any_of(kDocuments, is_name) || std::ranges::any_of(kNetworkDocuments, is_name);
}

std::string BaseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

Request RequestOf(std::string_view build) {
  build = TrimStart(build);
  if (build.starts_with('+') && !build.starts_with("+-")) build.remove_prefix(1);
  int number = 0;
  const auto [end, error] = std::from_chars(build.data(), build.data() + build.size(), number);
  if (error != std::errc()) return Request::Unknown;
  if (number < kFirstBuildOf13) return Request::Everything;
  return number < kFirstBuildOfNow ? Request::GlobalFiles : Request::Nothing;
}

}  // namespace lab
