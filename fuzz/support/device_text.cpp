#include "fuzz/support/device_text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "fuzz/support/plain_text.h"
#include "fuzz/support/private_device.h"

namespace fuzz {
namespace {

using Item = DeviceText::Item;

struct Heading {
  std::string_view word;
  Item::Kind kind;
  bool is_bare;
};
constexpr std::array kHeadings{
    Heading{"@file ", Item::Kind::File, false},  Heading{"@bare ", Item::Kind::File, true},
    Heading{"@dir ", Item::Kind::Folder, false}, Heading{"@link ", Item::Kind::Link, false},
    Heading{"@fifo ", Item::Kind::Fifo, false},
};

std::optional<Heading> HeadingOf(const std::string& line) {
  for (const Heading& heading : kHeadings) {
    if (line.starts_with(heading.word)) return heading;
  }
  return std::nullopt;
}

bool IsPath(const std::string& path) {
  if (!path.starts_with('/') || path.ends_with('/') || path.find('\0') != std::string::npos) return false;
  for (const auto& component : std::filesystem::path(path)) {
    if (component == "." || component == "..") return false;
  }
  return true;
}

void Make(const Item& item) {
  std::error_code failure;
  const std::filesystem::path path(item.path);
  std::filesystem::create_directories(path.parent_path(), failure);
  switch (item.kind) {
    case Item::Kind::File:
      WriteFile(item.path, item.text);
      break;
    case Item::Kind::Folder:
      std::filesystem::create_directory(path, failure);
      break;
    case Item::Kind::Link:
      std::filesystem::create_symlink(item.text, path, failure);
      break;
    case Item::Kind::Fifo:
      static_cast<void>(::mkfifo(item.path.c_str(), 0640));
      break;
  }
}

}  // namespace

DeviceText ParseDeviceText(const std::string& text) {
  const std::vector<std::string> lines = PlainLines(text);
  DeviceText device{lines.front(), {}};
  bool takes_contents = false;
  bool is_bare = false;
  const auto finish_file = [&] {
    if (takes_contents && is_bare && device.items.back().text.ends_with('\n'))
      device.items.back().text.pop_back();
    takes_contents = false;
  };
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const auto heading = HeadingOf(lines[i]);
    if (!heading) {
      const bool has_newline = i + 1 < lines.size();
      if (takes_contents) device.items.back().text += lines[i] + (has_newline ? "\n" : "");
      continue;
    }
    finish_file();
    Item item{heading->kind, lines[i].substr(heading->word.size()), ""};
    if (item.kind == Item::Kind::Link) {
      const std::size_t blank = std::min(item.path.find(' '), item.path.size());
      item.text = UpToNul(item.path.substr(std::min(blank + 1, item.path.size())));
      item.path.resize(blank);
    }
    if (!IsPath(item.path)) continue;
    takes_contents = item.kind == Item::Kind::File;
    is_bare = heading->is_bare;
    device.items.push_back(std::move(item));
  }
  finish_file();
  return device;
}

void LayOut(const std::vector<Item>& items) {
  for (const Item& item : items) Make(item);
}

}  // namespace fuzz
