#include "lab/page/shared_values.h"

#include <json/value.h>

#include <algorithm>
#include <utility>

#include "lab/page/script_data.h"
#include "lab/text/json.h"

namespace lab::page {
namespace {

constexpr std::size_t kDeepest = 200;
constexpr std::size_t kLongestExactNumber = 15;

/// Thrown where a text is not as this program writes JSON: the library then reads it and writes it anew.
struct OtherText {};

bool IsDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

bool IsPlainInteger(std::string_view number) {
  if (number.starts_with('-') && number != "-0") number.remove_prefix(1);
  const bool is_short = !number.empty() && number.size() <= kLongestExactNumber;
  return is_short && std::ranges::all_of(number, IsDigit) && (number.front() != '0' || number == "0");
}

/// What is no plain string or integer is read by the library.
std::string ScriptText(std::string_view token) {
  const auto value = ParseJson("[" + std::string(token) + "]");
  if (!value || value->size() != 1) throw OtherText();
  return ScriptData((*value)[0]);
}

}  // namespace

/// Goes over a JSON text once. By way of the library's tree of values a page took ten times as long, as much
/// as all rehearsals of its devices.
class SharingPass {
 public:
  /// Names of members have to ascend, as the library writes them.
  SharingPass(std::string_view json, bool is_of_library, SharedValues& shared)
      : json_(json), is_of_library_(is_of_library), shared_(shared) {}

  std::string Whole() {
    std::string text = Value("");
    if (offset_ != json_.size()) throw OtherText();
    return text;
  }

 private:
  char Next() const { return offset_ < json_.size() ? json_[offset_] : '\0'; }

  bool Skip(char byte) {
    if (Next() != byte) return false;
    ++offset_;
    return true;
  }

  void Require(bool condition) const {
    if (!condition) throw OtherText();
  }

  /// `file` is that of the part whose setting this may be.
  std::string Value(std::string_view file) {
    switch (Next()) {
      case '{':
        return Object(file);
      case '[':
        return Array("");
      case '"':
        return String();
      default:
        return Plain();
    }
  }

  std::string Plain() {
    const std::size_t end = std::min(json_.find_first_of(",]}", offset_), json_.size());
    const std::string_view token = json_.substr(offset_, end - offset_);
    offset_ = end;
    const bool is_word = token == "true" || token == "false" || token == "null";
    return is_word || IsPlainInteger(token) ? std::string(token) : ScriptText(token);
  }

  std::string String() {
    Require(Next() == '"');
    const std::size_t start = offset_++;
    bool is_plain = true;
    for (; Next() != '"'; ++offset_) {
      const auto byte = static_cast<unsigned char>(Next());
      Require(byte >= ' ');
      if (byte >= 0x7F || byte == '\\' || byte == '<' || byte == '>' || byte == '&') is_plain = false;
      if (byte == '\\') ++offset_;
    }
    ++offset_;
    const std::string_view token = json_.substr(start, offset_ - start);
    return is_plain ? std::string(token) : ScriptText(token);
  }

  /// `file` is that of the part that has these settings.
  std::string Array(std::string_view file) {
    Require(Skip('[') && ++depth_ < kDeepest);
    std::vector<std::string> elements;
    bool has_objects = false;
    while (Next() != ']') {
      Require(elements.empty() || Skip(','));
      if (Next() == '{' && !has_objects) {
        has_objects = true;
        for (std::string& element : elements) element = Index(element);
      }
      std::string element = Value(file);
      elements.push_back(has_objects ? Index(element) : std::move(element));
    }
    ++offset_;
    --depth_;
    std::string text = has_objects ? R"({"refs":[)" : "[";
    for (const std::string& element : elements) {
      if (&element != &elements.front()) text += ',';
      text += element;
    }
    return text + (has_objects ? "]}" : "]");
  }

  std::string Object(std::string_view part_file) {
    const std::size_t start = offset_;
    const std::size_t shared = shared_.Texts().size();
    Require(Skip('{') && ++depth_ < kDeepest);
    std::string text = "{";
    std::string former;
    std::string file;
    bool is_reference = false;
    while (Next() != '}') {
      Require(former.empty() || Skip(','));
      const std::string name = String();
      Require(Skip(':') && (is_of_library_ || former < name));
      const bool has_settings = name == "\"settings\"" && Next() == '[';
      const std::string value = has_settings ? Array(file) : Value("");
      if (name == "\"file\"" && value.front() == '"') file = value;
      is_reference = is_reference || name == "\"refs\"";
      former = name;
      if (name == "\"file\"" && value == part_file) continue;
      if (text.size() > 1) text += ',';
      text.append(name).append(":").append(value);
    }
    ++offset_;
    --depth_;
    // What only looks like a reference would lead the page astray, or round for ever.
    if (is_reference) {
      shared_.Cut(shared);
      return ScriptData(ScriptText(json_.substr(start, offset_ - start)));
    }
    return text + "}";
  }

  std::string Index(const std::string& element) { return std::to_string(shared_.IndexOf(element)); }

  std::string_view json_;
  bool is_of_library_;
  SharedValues& shared_;
  std::size_t offset_ = 0;
  std::size_t depth_ = 0;
};

std::optional<std::string> SharedValues::Share(std::string_view json) {
  const std::size_t size = texts_.size();
  try {
    return SharingPass(json, false, *this).Whole();
  } catch (const OtherText&) {
    Cut(size);
  }
  const auto value = ParseJson(json);
  if (!value) return std::nullopt;
  try {
    // Before the library writes it, which makes other characters of bytes that are no UTF-8.
    return SharingPass(JsonLine(PrintableJson(*value)), true, *this).Whole();
  } catch (const OtherText&) {  // nested too deep
    Cut(size);
    return std::nullopt;
  }
}

std::size_t SharedValues::IndexOf(const std::string& text) {
  const auto [known, is_new] = indices_.try_emplace(text, texts_.size());
  if (is_new) texts_.push_back(text);
  return known->second;
}

void SharedValues::Cut(std::size_t size) {
  for (; texts_.size() > size; texts_.pop_back()) indices_.erase(texts_.back());
}

}  // namespace lab::page
