// JSON documents: loaded from the input's bytes, saved, and loaded again. Input: a line, the member to ask
// for, then the document.
#include "platform/json_util.h"

#include <json/reader.h>
#include <json/writer.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/plain_text.h"
#include "fuzz/support/private_device.h"

namespace {

namespace JsonUtil = KELP::Wifi::Util::JsonUtil;

constexpr const char* kGiven = "/given.json";
constexpr const char* kSaved = "/saved.json";
constexpr std::size_t kLargestDocument = 1024 * 1024;

fuzz::PrivateDevice& Device() {
  static fuzz::PrivateDevice device;
  return device;
}

/// What `read` gives; none when it throws, which it may only do with a text that holds `named` and has no
/// line break of its own.
template <typename Read>
auto ResultOf(Read read, const std::string& named) {
  std::optional<decltype(read())> result;
  try {
    result = read();
  } catch (const std::runtime_error& error) {
    const std::string text = error.what();
    FUZZ_CHECK(text.find(named) != std::string::npos);
    FUZZ_CHECK(named.find('\n') != std::string::npos || text.find('\n') == std::string::npos);
  }
  return result;
}

/// What is loaded is JSON to the library's own strict reading too, and has the same values there.
void CheckVerdict(const std::string& text, const std::optional<Json::Value>& document) {
  if (!document) return;
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder.settings_["stackLimit"] = 2000;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value read;
  std::string errors;
  FUZZ_CHECK(reader->parse(text.data(), text.data() + text.size(), &read, &errors));
  FUZZ_CHECK(read == *document);
}

void CheckMembers(const Json::Value& document, const std::string& name) {
  const auto text =
      ResultOf([&] { return JsonUtil::GetString(document, name); }, fuzz::UpToNul("member " + name));
  const auto array =
      ResultOf([&] { return JsonUtil::GetArray(document, name); }, fuzz::UpToNul("member " + name));
  FUZZ_CHECK(!(text && array));
  const Json::Value member = document.isObject() ? document.get(name, Json::Value()) : Json::Value();
  FUZZ_CHECK(text.has_value() == member.isString());
  FUZZ_CHECK(array.has_value() == member.isArray());
  if (text) FUZZ_CHECK(Json::Value(*text) == member);
  if (array) FUZZ_CHECK(*array == member);
}

std::string LibraryText(const Json::Value& document) {
  Json::StreamWriterBuilder builder;
  builder["commentStyle"] = "None";
  builder["indentation"] = "\t";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, document);
}

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void CheckSaved(const Json::Value& document) {
  JsonUtil::SaveJsonToFile(kSaved, document);
  FUZZ_CHECK(ReadFile(kSaved) == LibraryText(document) + "\n");
  struct stat status {};
  FUZZ_CHECK(::lstat(kSaved, &status) == 0 && S_ISREG(status.st_mode) && (status.st_mode & 07777) == 0600);
  FUZZ_CHECK(std::distance(std::filesystem::directory_iterator("/"), {}) ==
             2);  // the given and the saved one

  // Indentation can make more than a mebibyte of a deeply nested document that was smaller.
  const auto again = ResultOf([&] { return JsonUtil::LoadJsonFromFile(kSaved); }, kSaved);
  FUZZ_CHECK(again.has_value() == (static_cast<std::size_t>(status.st_size) <= kLargestDocument));
  if (again) FUZZ_CHECK(*again == document);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argument_count*/, char*** /*arguments*/) {
  Device();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string name = input.TakeLine();
  const std::string text = input.TakeRest();

  const fuzz::PrivateDevice::Entered inside(Device());
  FUZZ_CHECK(fuzz::WriteFile(kGiven, text));
  const auto document = ResultOf([] { return JsonUtil::LoadJsonFromFile(kGiven); }, kGiven);
  CheckVerdict(text, document);
  if (!document) return 0;
  FUZZ_CHECK(document->isObject() || document->isArray());
  CheckMembers(*document, name);
  if (document->isObject()) {
    for (const std::string& member : document->getMemberNames()) CheckMembers(*document, member);
  }
  CheckSaved(*document);
  return 0;
}
