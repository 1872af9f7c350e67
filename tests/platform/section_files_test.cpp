#include "platform/section_files.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "lab/images/private_root.h"
#include "lab/runs/in_root.h"
#include "tests/support/without_file_privileges.h"

namespace {

using namespace std::string_literals;

constexpr const char* kFile = "/etc/hostapd/mac_filter/mf_deny.conf";
constexpr std::size_t kCapacity = 8192;

class SectionFiles : public ::testing::Test {
 protected:
  SectionFiles() : list_(KLIBCSzListAlloc(kCapacity)), table_(KLIBCSzHashAlloc(kCapacity)) {}
  ~SectionFiles() override {
    KLIBCSzListFree(list_);
    KLIBCSzHashFree(table_);
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (int i = 0; KLIBCSzListGet(list_, i) != nullptr; ++i) names.emplace_back(KLIBCSzListGet(list_, i));
    return names;
  }
  std::string Value(const char* key) const {
    const char* value = KLIBCSzHashGetValue(table_, key);
    return value == nullptr ? "(none)" : value;
  }

  lab::PrivateRoot device_;
  KLIBCSzList* list_;
  KLIBCSzHash* table_;
};

using Texts = std::vector<std::string>;

TEST_F(SectionFiles, FreeOfNullIsFine) {
  KLIBCSzListFree(nullptr);
  KLIBCSzHashFree(nullptr);
}

TEST_F(SectionFiles, NewListAndTableAreEmpty) {
  ASSERT_NE(list_, nullptr);
  ASSERT_NE(table_, nullptr);
  EXPECT_EQ(KLIBCSzListGet(list_, 0), nullptr);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, ""), nullptr);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "mac"), nullptr);
}

TEST_F(SectionFiles, AllocOfNoCapacityGrowsToo) {
  device_.Write(kFile, "[one]\na=1\n");
  const lab::InRoot inside(device_);
  KLIBCSzList* list = KLIBCSzListAlloc(0);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(KLIBCFileEnumSection(kFile, &list), 1);
  EXPECT_STREQ(KLIBCSzListGet(list, 0), "one");
  KLIBCSzListFree(list);
}

TEST_F(SectionFiles, EnumGivesNamesInFileOrderEachOnce) {
  device_.Write(kFile, "stray=1\n[b]\na=1\n[a]\n[b]\nc=2\n;[c]\n[]\n");
  const lab::InRoot inside(device_);
  EXPECT_EQ(KLIBCFileEnumSection(kFile, &list_), 3);
  EXPECT_EQ(Names(), (Texts{"b", "a", ""}));
}

TEST_F(SectionFiles, EnumOfAFileWithoutSectionsIsZero) {
  device_.Write(kFile, "mac=1\n");
  device_.Write("/etc/empty", "");
  const lab::InRoot inside(device_);
  EXPECT_EQ(KLIBCFileEnumSection(kFile, &list_), 0);
  EXPECT_EQ(KLIBCFileEnumSection("/etc/empty", &list_), 0);
}

TEST_F(SectionFiles, EnumReplacesTheListsContents) {
  device_.Write(kFile, "[one]\n[two]\n");
  device_.Write("/etc/other", "[three]\n");
  device_.Write("/etc/none", "");
  const lab::InRoot inside(device_);
  ASSERT_EQ(KLIBCFileEnumSection(kFile, &list_), 2);
  ASSERT_EQ(KLIBCFileEnumSection("/etc/other", &list_), 1);
  EXPECT_EQ(Names(), (Texts{"three"}));
  ASSERT_EQ(KLIBCFileEnumSection("/etc/none", &list_), 0);
  EXPECT_EQ(Names(), Texts{});
}

TEST_F(SectionFiles, ListGivesNothingOutsideItsRange) {
  device_.Write(kFile, "[one]\n[two]\n");
  const lab::InRoot inside(device_);
  ASSERT_EQ(KLIBCFileEnumSection(kFile, &list_), 2);
  EXPECT_EQ(KLIBCSzListGet(list_, -1), nullptr);
  EXPECT_EQ(KLIBCSzListGet(list_, 2), nullptr);
  EXPECT_EQ(KLIBCSzListGet(list_, 1'000'000), nullptr);
  EXPECT_STREQ(KLIBCSzListGet(list_, 1), "two");
}

TEST_F(SectionFiles, MissingOrUnreadableFileIsNegative) {
  device_.MakeDirectory("/etc/directory");
  device_.MakeFifo("/etc/fifo");
  device_.Link("/etc/dangling", "/etc/nowhere");
  device_.Write("/etc/unreadable", "[one]\na=1\n", 0000);
  const lab::InRoot inside(device_);
  const testing_support::WithoutFilePrivileges ordinary;
  for (const auto* path : {kFile, "/etc/directory", "/etc/fifo", "/etc/dangling", "/etc/unreadable"}) {
    EXPECT_LT(KLIBCFileEnumSection(path, &list_), 0) << path;
    EXPECT_LT(KLIBCFileGetSection(path, "one", &table_), 0) << path;
  }
}

TEST_F(SectionFiles, LoadGivesTheSectionsEntries) {
  device_.Write(kFile, "[one]\nenable=yes\ndesc=\"Tom's phone\"\nmac=00:11:22:33:44:55\n[two]\nmac=x\n");
  const lab::InRoot inside(device_);
  EXPECT_GT(KLIBCFileGetSection(kFile, "one", &table_), 0);
  EXPECT_EQ(Value("enable"), "yes");
  EXPECT_EQ(Value("desc"), "Tom's phone");
  EXPECT_EQ(Value("mac"), "00:11:22:33:44:55");
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "MAC"), nullptr);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "ma"), nullptr);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, ""), nullptr);
}

TEST_F(SectionFiles, ValueIsNoKey) {
  device_.Write(kFile, "[one]\na=b\nc=d\n");
  const lab::InRoot inside(device_);
  ASSERT_GT(KLIBCFileGetSection(kFile, "one", &table_), 0);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "b"), nullptr);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "d"), nullptr);
}

TEST_F(SectionFiles, LoadReplacesTheTablesContents) {
  device_.Write(kFile, "[one]\nenable=yes\ndesc=first\n[two]\nmac=x\n[three]\n");
  const lab::InRoot inside(device_);
  ASSERT_GT(KLIBCFileGetSection(kFile, "one", &table_), 0);
  ASSERT_GT(KLIBCFileGetSection(kFile, "two", &table_), 0);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "enable"), nullptr);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "desc"), nullptr);
  EXPECT_EQ(Value("mac"), "x");
  EXPECT_EQ(KLIBCFileGetSection(kFile, "three", &table_), 0);
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "mac"), nullptr);
}

TEST_F(SectionFiles, LoadOfAnUnknownSectionOrOneWithoutEntriesIsZero) {
  device_.Write(kFile, "stray=1\n[one]\n;a=1\nword\n");
  const lab::InRoot inside(device_);
  EXPECT_EQ(KLIBCFileGetSection(kFile, "one", &table_), 0);
  EXPECT_EQ(KLIBCFileGetSection(kFile, "two", &table_), 0);
  EXPECT_EQ(KLIBCFileGetSection(kFile, "", &table_), 0);
}

TEST_F(SectionFiles, FirstOfTwoEntriesWithOneKeyCountsAcrossContinuedSections) {
  device_.Write(kFile, "[one]\na=first\na=second\n[two]\na=other\n[one]\na=third\nb=continued\n");
  const lab::InRoot inside(device_);
  ASSERT_GT(KLIBCFileGetSection(kFile, "one", &table_), 0);
  EXPECT_EQ(Value("a"), "first");
  EXPECT_EQ(Value("b"), "continued");
}

TEST_F(SectionFiles, EmptyValueAndEmptyKeyArePresent) {
  device_.Write(kFile, "[one]\nempty=\nquoted=\"\"\n=nameless\n");
  const lab::InRoot inside(device_);
  ASSERT_GT(KLIBCFileGetSection(kFile, "one", &table_), 0);
  EXPECT_EQ(Value("empty"), "");
  EXPECT_EQ(Value("quoted"), "");
  EXPECT_EQ(Value(""), "nameless");
}

TEST_F(SectionFiles, SectionOfTheEmptyNameLoads) {
  device_.Write(kFile, "stray=1\n[]\na=1\n[]]\na=2\n");
  const lab::InRoot inside(device_);
  ASSERT_GT(KLIBCFileGetSection(kFile, "", &table_), 0);
  EXPECT_EQ(Value("a"), "1");
  EXPECT_EQ(KLIBCSzHashGetValue(table_, "stray"), nullptr);
  ASSERT_GT(KLIBCFileGetSection(kFile, "]", &table_), 0);
  EXPECT_EQ(Value("a"), "2");
}

TEST_F(SectionFiles, EachListedNameLoadsItsSection) {
  device_.Write(kFile, "[a\0hidden]\nk=v\0hidden\nl=2\n[b]\nk=3\n"s);
  const lab::InRoot inside(device_);
  ASSERT_EQ(KLIBCFileEnumSection(kFile, &list_), 2);
  EXPECT_EQ(Names(), (Texts{"a", "b"}));
  ASSERT_GT(KLIBCFileGetSection(kFile, KLIBCSzListGet(list_, 0), &table_), 0);
  EXPECT_EQ(Value("k"), "v");
  EXPECT_EQ(Value("l"), "2");
}

TEST_F(SectionFiles, ListAndTableGrowBeyondTheirFirstReservation) {
  // More names than 8192, more bytes than 8192 in one name, and the same in a table.
  std::string text;
  for (int i = 0; i < 10'000; ++i) text.append("[").append(std::to_string(i)).append("]\n");
  const std::string long_name(20'000, 'n');
  text += "[" + long_name + "]\n";
  for (int i = 0; i < 10'000; ++i) {
    const std::string number = std::to_string(i);
    text.append("key").append(number).append("=").append(number).append("\n");
  }
  text += "long=" + long_name + "\n";
  device_.Write(kFile, text);
  const lab::InRoot inside(device_);
  ASSERT_EQ(KLIBCFileEnumSection(kFile, &list_), 10'001);
  EXPECT_STREQ(KLIBCSzListGet(list_, 0), "0");
  EXPECT_STREQ(KLIBCSzListGet(list_, 8191), "8191");
  EXPECT_STREQ(KLIBCSzListGet(list_, 8192), "8192");
  EXPECT_STREQ(KLIBCSzListGet(list_, 9999), "9999");
  EXPECT_EQ(KLIBCSzListGet(list_, 10'000), long_name);

  ASSERT_GT(KLIBCFileGetSection(kFile, long_name.c_str(), &table_), 0);
  EXPECT_EQ(Value("key0"), "0");
  EXPECT_EQ(Value("key8192"), "8192");
  EXPECT_EQ(Value("key9999"), "9999");
  EXPECT_EQ(Value("long"), long_name);
}

TEST_F(SectionFiles, FileThatChangedBetweenTwoCallsIsReadAnew) {
  device_.Write(kFile, "[one]\na=1\n");
  {
    const lab::InRoot inside(device_);
    ASSERT_GT(KLIBCFileGetSection(kFile, "one", &table_), 0);
    ASSERT_EQ(Value("a"), "1");
  }
  device_.Write(kFile, "[one]\na=2\n");
  {
    const lab::InRoot inside(device_);
    ASSERT_GT(KLIBCFileGetSection(kFile, "one", &table_), 0);
    EXPECT_EQ(Value("a"), "2");
  }
  device_.Remove(kFile);
  const lab::InRoot inside(device_);
  EXPECT_LT(KLIBCFileGetSection(kFile, "one", &table_), 0);
  EXPECT_LT(KLIBCFileEnumSection(kFile, &list_), 0);
}

}  // namespace
