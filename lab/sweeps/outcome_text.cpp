#include "lab/sweeps/outcome_text.h"

#include <cstdint>
#include <stdexcept>

namespace lab::sweeps {
namespace {

class Writer {
 public:
  void Add(std::int64_t number) { text_.append(reinterpret_cast<const char*>(&number), sizeof number); }
  void Add(std::string_view bytes) {
    Add(static_cast<std::int64_t>(bytes.size()));
    text_ += bytes;
  }
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  std::int64_t Number() {
    std::int64_t number = 0;
    TakeBytes(sizeof number).copy(reinterpret_cast<char*>(&number), sizeof number);
    return number;
  }
  std::string Text() { return std::string(TakeBytes(static_cast<std::size_t>(Number()))); }

 private:
  std::string_view TakeBytes(std::size_t size) {
    if (size > rest_.size()) throw std::runtime_error("a cut outcome");
    const std::string_view bytes = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return bytes;
  }

  std::string_view rest_;
};

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

}  // namespace

std::string ToText(const Outcome& outcome) {
  Writer writer;
  writer.Add(std::int64_t{outcome.status});
  writer.Add(std::int64_t{outcome.signal});
  writer.Add(std::int64_t{outcome.timed_out ? 1 : 0});
  writer.Add(outcome.out);
  writer.Add(outcome.err);
  writer.Add(static_cast<std::int64_t>(outcome.log.size()));
  for (const std::string& line : outcome.log) writer.Add(line);
  writer.Add(static_cast<std::int64_t>(outcome.files.size()));
  for (const auto& [path, entry] : outcome.files) {
    writer.Add(path);
    writer.Add(static_cast<std::int64_t>(entry.kind));
    writer.Add(std::int64_t{entry.mode});
    writer.Add(entry.content);
  }
  return writer.Take();
}

Outcome FromText(std::string_view text) {
  Reader reader(text);
  Outcome outcome;
  outcome.status = static_cast<int>(reader.Number());
  outcome.signal = static_cast<int>(reader.Number());
  outcome.timed_out = reader.Number() != 0;
  outcome.out = reader.Text();
  outcome.err = reader.Text();
  for (std::int64_t lines = reader.Number(); lines > 0; --lines) outcome.log.push_back(reader.Text());
  for (std::int64_t entries = reader.Number(); entries > 0; --entries) {
    const std::string path = reader.Text();
    Entry& entry = outcome.files[path];
    entry.kind = static_cast<Entry::Kind>(reader.Number());
    entry.mode = static_cast<mode_t>(reader.Number());
    entry.content = reader.Text();
  }
  return outcome;
}

std::string Difference(const Outcome& expected, const Outcome& other) {
  std::string text;
  const auto compare = [&](const char* what, const std::string& first, const std::string& second) {
    if (first != second)
      text.append(what).append(": ").append(second).append("\n   not: ").append(first) += '\n';
  };
  compare("status", std::to_string(expected.status), std::to_string(other.status));
  compare("signal", std::to_string(expected.signal), std::to_string(other.signal));
  compare("standard output", expected.out, other.out);
  compare("standard error", expected.err, other.err);
  compare("log", Joined(expected.log), Joined(other.log));
  for (const auto& [path, entry] : expected.files) {
    const auto found = other.files.find(path);
    if (found == other.files.end()) {
      text += "missing: " + path + "\n";
    } else if (!(found->second == entry)) {
      text += "different: " + path + "\n";
    }
  }
  for (const auto& [path, entry] : other.files) {
    if (!expected.files.contains(path)) text += "unexpected: " + path + "\n";
  }
  return text;
}

}  // namespace lab::sweeps
