#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "legacy/interface_mac.h"

namespace KELP::Wifi::Updater {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kTexts = 12'000;
constexpr std::size_t kTextsAProcess = 600;

/// Where files cost no disk, if the machine has that: sed makes a new one for each that it edits.
std::filesystem::path PlaceForFiles() {
  const std::filesystem::path memory = "/dev/shm";
  return std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
}

/// A folder that goes away with the object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (PlaceForFiles() / "pair_colons.XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder");
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }

  std::filesystem::path operator/(std::size_t number) const { return path_ / std::to_string(number); }
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

std::string Read(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void Write(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

/// What the machine's sed makes of each text, hundreds of them in one process: each stands in a file of its
/// own that sed edits in place.
std::vector<std::string> Edit(const std::vector<std::string>& texts) {
  const TemporaryFolder folder;
  std::vector<std::string> edited;
  for (std::size_t first = 0; first < texts.size(); first += kTextsAProcess) {
    const std::size_t end = std::min(first + kTextsAProcess, texts.size());
    std::string command = "cd '" + folder.Path().string() + "' && LC_ALL=C sed -i 's/..\\B/&:/g'";
    for (std::size_t i = first; i < end; ++i) {
      Write(folder / i, texts[i]);
      command.append(" ").append(std::to_string(i));
    }
    EXPECT_EQ(std::system(command.c_str()), 0);
    for (std::size_t i = first; i < end; ++i) edited.push_back(Read(folder / i));
  }
  return edited;
}

/// What the command prints for one text, started as a shell's command.
std::string Print(const std::string& text) {
  const TemporaryFolder folder;
  Write(folder / 0, text);
  const std::string command = "LC_ALL=C sed 's/..\\B/&:/g' " + (folder / 0).string() + " 2>&1";
  FILE* const pipe = ::popen(command.c_str(), "r");
  EXPECT_NE(pipe, nullptr);
  std::string printed;
  std::array<char, 256> piece{};
  for (std::size_t got = 0; (got = std::fread(piece.data(), 1, piece.size(), pipe)) > 0;) {
    printed.append(piece.data(), got);
  }
  EXPECT_EQ(::pclose(pipe), 0);
  return printed;
}

std::string Escaped(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    std::array<char, 5> escape{};
    const auto value = static_cast<unsigned>(static_cast<unsigned char>(byte));
    std::snprintf(escape.data(), escape.size(),
                  value < 0x20 || value > 0x7E || value == '\\' ? "\\x%02X" : "%c", value);
    text += escape.data();
  }
  return text;
}

class TextSource {
 public:
  /// Of all bytes, of few kinds of bytes (so that every neighbourhood of word and other bytes comes up), of
  /// what an entry holds; with line ends here and there, of even and odd lengths, with and without a newline
  /// at the end.
  std::string Next() {
    switch (Below(4)) {
      case 0:
        return Text([&] { return static_cast<char>(Below(256)); });
      case 1:
        return Text([&] { return Of("aZ09_:-. \t\r\0\xE4\xFF\n"sv); });
      case 2:
        return Text([&] { return Of("a:\n"sv); });
      default:
        return Text([&] { return Of("0123456789abcdefABCDEF"sv); }) + std::string(Below(4), '\n');
    }
  }

 private:
  std::size_t Below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine_);
  }
  char Of(std::string_view bytes) { return bytes[Below(bytes.size())]; }
  template <typename Byte>
  std::string Text(Byte byte) {
    std::string text(Below(48), '\0');
    for (char& place : text) place = byte();
    return text;
  }

  std::mt19937 engine_{20'210'101};
};

void ExpectAsSed(const std::vector<std::string>& texts) {
  const std::vector<std::string> expected = Edit(texts);
  ASSERT_EQ(expected.size(), texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    ASSERT_EQ(Escaped(InsertPairColons(texts[i])), Escaped(expected[i])) << "of " << Escaped(texts[i]);
  }
}

TEST(InsertPairColonsAsSed, OfRandomTexts) {
  TextSource source;
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < kTexts; ++i) texts.push_back(source.Next());
  ExpectAsSed(texts);
}

TEST(InsertPairColonsAsSed, OfEveryShortTextOfAWordByteAColonAndANewline) {
  std::vector<std::string> texts{""};
  for (std::size_t i = 0; texts[i].size() < 6; ++i) {
    for (const char byte : "a:\n"sv) texts.push_back(texts[i] + byte);
  }
  ExpectAsSed(texts);
}

TEST(InsertPairColonsAsSed, OfEveryByteAtEachPlaceOfAPair) {
  std::vector<std::string> texts;
  for (int value = 0; value < 256; ++value) {
    const char byte = static_cast<char>(value);
    for (const char other : "a:"sv) {
      texts.push_back({byte, other, other});
      texts.push_back({other, byte, other});
      texts.push_back({other, other, byte});
      texts.push_back({byte, byte, byte, byte, byte});
    }
  }
  ExpectAsSed(texts);
}

TEST(InsertPairColonsAsSed, CommandPrintsWhatEditingInPlaceWrites) {
  TextSource source;
  for (int i = 0; i < 100; ++i) {
    const std::string text = source.Next();
    ASSERT_EQ(Escaped(InsertPairColons(text)), Escaped(Print(text))) << "of " << Escaped(text);
  }
}

}  // namespace
}  // namespace KELP::Wifi::Updater
