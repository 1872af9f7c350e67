#include "platform/sdk_utils.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>

#include "base/file_cache.h"
#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "platform/json_util.h"
#include "tests/support/without_file_privileges.h"

namespace KELP::Wifi::Util::SDKUtils {
namespace {

using namespace std::string_literals;

constexpr const char* kFile = "/usr/kelp/etc/wifi/wifi_wps";
constexpr const char* kStore = "/usr/kelp/etc/info.conf";

TEST(FileGetKeyValue, GivesTheValueAsItStands) {
  lab::PrivateRoot device;
  device.Write(kFile, "# settings\nspaced=  a b \nempty=\nquoted=\"q\"\ncr=v\r\nequals=a=b\nlast=z");
  const lab::InRoot inside(device);
  EXPECT_EQ(FileGetKeyValue(kFile, "spaced"), "  a b ");
  EXPECT_EQ(FileGetKeyValue(kFile, "empty"), "");
  EXPECT_EQ(FileGetKeyValue(kFile, "quoted"), "q");
  EXPECT_EQ(FileGetKeyValue(kFile, "cr"), "v\r");
  EXPECT_EQ(FileGetKeyValue(kFile, "equals"), "a=b");
  EXPECT_EQ(FileGetKeyValue(kFile, "last"), "z");
}

TEST(FileGetKeyValue, GivesNULsAndBytesAbove0x7F) {
  lab::PrivateRoot device;
  device.Write(kFile, "key=a\0b\xFF\n"s);
  const lab::InRoot inside(device);
  EXPECT_EQ(FileGetKeyValue(kFile, "key"), "a\0b\xFF"s);
}

TEST(FileGetKeyValue, FirstOfTwoEntriesCounts) {
  lab::PrivateRoot device;
  device.Write(kFile, "key=first\nkey=second\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(FileGetKeyValue(kFile, "key"), "first");
}

TEST(FileGetKeyValue, MissingKeyThrowsWithKeyAndPath) {
  lab::PrivateRoot device;
  device.Write(kFile, "key=value\n");
  const lab::InRoot inside(device);
  try {
    FileGetKeyValue(kFile, "another");
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::strstr(error.what(), "another"), nullptr) << error.what();
    EXPECT_NE(std::strstr(error.what(), kFile), nullptr) << error.what();
  }
  EXPECT_THROW(FileGetKeyValue(kFile, ""), std::runtime_error);
  EXPECT_THROW(FileGetKeyValue(kFile, "key=value"), std::runtime_error);
  EXPECT_THROW(FileGetKeyValue(kFile, "key\n"), std::runtime_error);
}

TEST(FileGetKeyValue, ThrowsForAnythingButAReadableRegularFile) {
  lab::PrivateRoot device;
  device.MakeDirectory("/etc/directory");
  device.MakeFifo("/etc/fifo");
  device.Link("/etc/dangling", "/etc/nowhere");
  device.Write("/etc/unreadable", "key=value\n", 0000);
  const lab::InRoot inside(device);
  const testing_support::WithoutFilePrivileges ordinary;
  for (const auto* path :
       {"/etc/missing", "/etc/directory", "/etc/fifo", "/etc/dangling", "/etc/unreadable"}) {
    EXPECT_THROW(FileGetKeyValue(path, "key"), std::system_error) << path;
  }
}

TEST(FileGetKeyValue, EmptyFileHasNoKey) {
  lab::PrivateRoot device;
  device.Write(kFile, "");
  const lab::InRoot inside(device);
  EXPECT_THROW(FileGetKeyValue(kFile, "key"), std::runtime_error);
  EXPECT_THROW(FileGetKeyValue(kFile, ""), std::runtime_error);
}

TEST(FileGetKeyValue, AnswersForTheFileAsItIsAtEachCall) {
  lab::PrivateRoot device;
  device.MakeDirectory("/etc");
  const lab::InRoot inside(device);
  for (int i = 0; i < 5000; ++i) {
    const std::string value = std::to_string(100000 + i);
    const std::string text = "key=" + value + "\n";
    const int file = ::open("/etc/file", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_GE(file, 0);
    ASSERT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::close(file);
    ASSERT_EQ(FileGetKeyValue("/etc/file", "key"), value);
  }
}

/// How often a file was opened since this was made.
class OpenCount {
 public:
  explicit OpenCount(const char* path) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    // With the closing watched too no two events in a row are alike: the kernel would join them into one.
    EXPECT_GE(::inotify_add_watch(events_, path, IN_OPEN | IN_CLOSE), 0);
  }
  OpenCount(const OpenCount&) = delete;
  OpenCount& operator=(const OpenCount&) = delete;
  ~OpenCount() { ::close(events_); }

  int Get() {
    alignas(inotify_event) std::array<char, 65536> bytes{};
    for (ssize_t got = 0; (got = ::read(events_, bytes.data(), bytes.size())) > 0;) {
      for (std::size_t place = 0; place < static_cast<std::size_t>(got);) {
        inotify_event event{};
        std::memcpy(&event, bytes.data() + place, sizeof event);
        if ((event.mask & IN_OPEN) != 0) ++opened_;
        place += sizeof event + event.len;
      }
    }
    return opened_;
  }

 private:
  int events_;
  int opened_ = 0;
};

TEST(FileGetKeyValue, AThousandReadsOfARunOpenTheFileOnce) {
  lab::PrivateRoot device;
  device.Write(kFile, "key=value\nother=2\n");
  const lab::InRoot inside(device);
  const FileCacheScope run;
  OpenCount opened(kFile);
  for (int i = 0; i < 500; ++i) {
    ASSERT_EQ(FileGetKeyValue(kFile, "key"), "value");
    ASSERT_EQ(FileGetKeyValue(kFile, "other"), "2");
    ASSERT_THROW(FileGetKeyValue(kFile, "missing"), std::runtime_error);
  }
  EXPECT_EQ(opened.Get(), 1);
}

TEST(FileGetKeyValue, AnswersOneRunForTheFilesAsItFoundThem) {
  lab::PrivateRoot device;
  device.Write(kFile, "key=value\n");
  const lab::InRoot inside(device);
  for (const char* value : {"value", "second"}) {
    device.Write(kFile, std::string("key=") + value + "\n");
    const FileCacheScope run;
    ASSERT_EQ(FileGetKeyValue(kFile, "key"), value);
    ASSERT_THROW(FileGetKeyValue("/etc/missing", "key"), std::system_error);
    device.Write(kFile, "key=other\nnew=1\n");
    device.Write("/etc/missing", "key=other\n");
    EXPECT_EQ(FileGetKeyValue(kFile, "key"), value);
    EXPECT_THROW(FileGetKeyValue(kFile, "new"), std::runtime_error);
    EXPECT_THROW(FileGetKeyValue("/etc/missing", "key"), std::system_error);
    device.Remove("/etc/missing");
  }
  EXPECT_EQ(FileGetKeyValue(kFile, "key"), "other");
}

TEST(FileGetKeyValue, AnswersForTheFileAsItIsBehindADocumentThatTheRunSaves) {
  lab::PrivateRoot device;
  device.Write(kFile, "key=value\n");
  const lab::InRoot inside(device);
  const FileCacheScope run;
  ASSERT_EQ(FileGetKeyValue(kFile, "key"), "value");
  device.Write(kFile, "key=other\n");
  JsonUtil::SaveJsonToFile("/usr/kelp/etc/wifi/document.json", Json::Value(Json::objectValue));
  EXPECT_EQ(FileGetKeyValue(kFile, "key"), "other");
}

TEST(InfoGetKeyValue, ReadsTheInformationStore) {
  lab::PrivateRoot device;
  device.Write(kStore, "kelpbios=lotus\nnet_topology=\"router\"\n");
  device.Write("/etc/info.conf", "kelpbios=wrong\n");
  const lab::InRoot inside(device);
  EXPECT_EQ(InfoGetKeyValue("kelpbios"), "lotus");
  EXPECT_EQ(InfoGetKeyValue("net_topology"), "router");
}

TEST(InfoGetKeyValue, ThrowsForAnUnknownKeyAndAMissingStore) {
  lab::PrivateRoot device;
  device.Write(kStore, "kelpbios=lotus\n");
  {
    const lab::InRoot inside(device);
    EXPECT_THROW(InfoGetKeyValue("country_code"), std::runtime_error);
  }
  device.Remove(kStore);
  const lab::InRoot inside(device);
  EXPECT_THROW(InfoGetKeyValue("kelpbios"), std::system_error);
}

}  // namespace
}  // namespace KELP::Wifi::Util::SDKUtils
