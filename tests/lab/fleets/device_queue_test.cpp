#include "lab/fleets/device_queue.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace lab::fleets {
namespace {

using lab_test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::Eq;

std::string Refusal(const std::string& line) {
  try {
    ParseListLine(line, "", "8000");
    return "taken";
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

TEST(ListLines, NameADevice) {
  EXPECT_EQ(ParseListLine(R"({"image": "a"})", "", "8000"), (DeviceSource{"a", "8000", {}, {}}));
  EXPECT_EQ(ParseListLine(R"({"image": "a/../b", "from": 8113}  )", "lists/x", "8000"),
            (DeviceSource{"lists/x/b", "8113", {}, {}}));
  EXPECT_EQ(ParseListLine(R"({"image": "/abs", "from": "-5x"})", "lists", "8000"),
            (DeviceSource{"/abs", "-5x", {}, {}}));
  EXPECT_EQ(ParseListLine(R"({"image": "a", "files": {"/etc/x": "1\n"}, "boot": {"b": "2"}})", "", "8000"),
            (DeviceSource{"a", "8000", {{"/etc/x", "1\n"}}, {{"b", "2"}}}));
}

TEST(ListLines, AreReadBack) {
  const DeviceSource source{"a \"b\"", "8113", {{"/etc/x", "1\né"}}, {{"usb3_disable", "1"}}};
  EXPECT_EQ(ParseListLine(ListLine(source), "", "1"), source);
  EXPECT_EQ(FromMessage(ToMessage(source)), source);
  const DeviceSource bare{"\xFF", "1", {}, {{"x", ""}}};
  EXPECT_EQ(FromMessage(ToMessage(bare)), bare);
}

TEST(ListLines, ThatNameNoneAreRefused) {
  const std::string no_path = "\"image\" is no path";
  const std::string no_build = "\"from\" is neither a text nor a whole number";
  const std::vector<std::pair<std::string, std::string>> refusals{
      {"no json", "is no JSON object"},
      {R"({"image":"a")", "is no JSON object"},
      {std::string(100'000, '['), "is no JSON object"},
      {R"({"image":"a","image":"b"})", "is no JSON object"},
      {"[]", "is no JSON object"},
      {"null", "is no JSON object"},
      {"1", "is no JSON object"},
      {R"("a")", "is no JSON object"},
      {"{}", "has no \"image\""},
      {R"({"image":1})", no_path},
      {R"({"image":""})", no_path},
      {R"({"image":"a\u0000b"})", no_path},
      {R"({"image":"a","from":1.5})", no_build},
      {R"({"image":"a","from":"8\u00000"})", no_build},
      {R"({"image":"a","form":1})", "\"form\" is no member of a list"},
      {R"({"image":"a","files":[]})", "\"files\" is no object"},
      {R"({"image":"a","boot":{"x":1}})", "\"boot\": \"x\" is no text"},
  };
  for (const auto& [line, refusal] : refusals) EXPECT_EQ(Refusal(line), refusal) << line.substr(0, 100);
}

class Queues : public ::testing::Test {
 protected:
  /// The images of all devices, "..." where the queue waits.
  static std::vector<std::string> Images(DeviceQueue& queue) {
    std::vector<std::string> images;
    while (true) {
      const DeviceQueue::State state = queue.Look();
      if (state == DeviceQueue::State::AtEnd) return images;
      if (state == DeviceQueue::State::Waiting) {
        images.emplace_back("...");
        return images;
      }
      images.push_back(queue.Take().image);
    }
  }

  DeviceQueue Queue(std::vector<std::string> images) {
    return {std::move(images), "8000", [this](const std::string& text) { complaints_.push_back(text); }};
  }

  std::string List(const std::string& text) const {
    folder_.Write("lists/list", text);
    return "@" + (folder_ / "lists/list").native();
  }

  std::string InFolder(const std::string& name) const { return (folder_ / "lists" / name).native(); }

  TemporaryFolder folder_;
  std::vector<std::string> complaints_;
};

TEST_F(Queues, HoldImagesAndLists) {
  DeviceQueue queue = Queue({"first", List("{\"image\":\"a\"}\n\n{\"image\":\"/b\"}"), "last"});
  EXPECT_THAT(queue.Count(), Eq(5U)) << "an empty line is counted, being one";
  EXPECT_THAT(Images(queue), ElementsAre("first", InFolder("a"), "/b", "last"));
  EXPECT_THAT(complaints_, ElementsAre());
}

TEST_F(Queues, NameTheLinesThatAreNone) {
  const std::string list = List("{\"image\":\"a\"}\nno\n{\"image\":\"b\"}\n{}\n");
  DeviceQueue queue = Queue({list});
  EXPECT_THAT(Images(queue), ElementsAre(InFolder("a"), InFolder("b")));
  EXPECT_THAT(complaints_,
              ElementsAre(list.substr(1) + ":2: is no JSON object", list.substr(1) + ":4: has no \"image\""));
}

TEST_F(Queues, ReadLongListsPieceByPiece) {
  std::string text;
  for (int i = 0; i < 20'000; ++i) text += R"({"image":"/)" + std::to_string(i) + "\"}\n";
  DeviceQueue queue = Queue({List(text)});
  EXPECT_THAT(queue.Count(), Eq(20'000U));
  const std::vector<std::string> images = Images(queue);
  ASSERT_EQ(images.size(), 20'000U);
  EXPECT_EQ(images.front(), "/0");
  EXPECT_EQ(images.back(), "/19999");
}

TEST_F(Queues, DoNotWaitForALineThatHasNotCome) {
  const std::filesystem::path fifo = folder_ / "fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  const int writing = ::open(fifo.c_str(), O_RDWR | O_CLOEXEC);
  DeviceQueue queue = Queue({"@" + fifo.native()});
  EXPECT_EQ(queue.Count(), std::nullopt);
  EXPECT_THAT(Images(queue), ElementsAre("..."));
  ASSERT_EQ(::write(writing, "{\"image\":\"/a\"}\n{\"im", 19), 19);
  EXPECT_THAT(Images(queue), ElementsAre("/a", "..."));
  ASSERT_EQ(::write(writing, "age\":\"/b\"}\n", 11), 11);
  EXPECT_THAT(Images(queue), ElementsAre("/b", "..."));
  ::close(writing);
  EXPECT_THAT(Images(queue), ElementsAre());
}

TEST_F(Queues, DoNotWaitForWhoWritesAList) {
  const std::filesystem::path fifo = folder_ / "fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  DeviceQueue queue = Queue({"@" + fifo.native()});
  EXPECT_THAT(Images(queue), ElementsAre("..."));
  const int writing = ::open(fifo.c_str(), O_WRONLY | O_CLOEXEC);
  EXPECT_THAT(Images(queue), ElementsAre("..."));
  ASSERT_EQ(::write(writing, "{\"image\":\"/a\"}", 14), 14);
  ::close(writing);
  EXPECT_THAT(Images(queue), ElementsAre("/a"));
}

TEST_F(Queues, NameALineThatIsTooLong) {
  DeviceQueue queue = Queue({List("{\"image\":\"/a\"}\n" + std::string(std::size_t{17} << 20, 'x'))});
  queue.Look();
  queue.Take();
  try {
    queue.Look();
    FAIL() << "taken";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), InFolder("list") + ":2: is longer than 16 MiB");
  }
}

TEST_F(Queues, FailForAListThatIsNotThere) {
  DeviceQueue queue = Queue({"@/no/list"});
  EXPECT_THROW(queue.Look(), std::system_error);
}

}  // namespace
}  // namespace lab::fleets
