#include "lab/reports/documents_reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

using ::testing::HasSubstr;

TEST(DocumentsReference, IsWhatTheDocumentationHas) {
  EXPECT_EQ(lab_test::ReadFile(KELP_SOURCE "/docs/documents.md"), DocumentsReference());
}

TEST(DocumentsReference, TellsMembersWithTypesAndWords) {
  const std::string text = DocumentsReference();
  EXPECT_THAT(text,
              HasSubstr("| `logLevel` | number | Log level: always 2, the level that migrations set |"));
  EXPECT_THAT(text, HasSubstr("| `meshInfo.isRepeater` | bool | Device is a mesh repeater |"));
  EXPECT_THAT(text, HasSubstr("one of 198 names, `AD` to `MaxCountryCode`"));
  EXPECT_THAT(text, HasSubstr("| `mode` | number | Wireless mode: `0` n, `1` bgn, `4` ac, `5` an+ac |"));
  EXPECT_THAT(text, HasSubstr("| `devices` | array of objects | Devices on the list: at least 1 |"));
  EXPECT_THAT(text, HasSubstr("| `thirdFlag` | bool | Third flag: always false |"));
  EXPECT_THAT(text,
              HasSubstr("| `mac_filter_profile_id` | number | MAC filter profile: `-1` none, otherwise id "
                        "of a profile in misc.json |"));
  EXPECT_THAT(text, HasSubstr("| `guestPasswordRotation.mail_list` | array of strings | Mail addresses |"));
  EXPECT_THAT(text, HasSubstr("| `pin` | string | WPS PIN (a secret). "));
}

TEST(DocumentsReference, TellsNoMemberTwice) {
  const std::string text = DocumentsReference();
  for (const char* member : {"| `security` |", "| `mac` |", "| `policy` |", "Beside these members",
                             "| `guestPasswordRotation.enable` |"}) {
    ASSERT_THAT(text, HasSubstr(member));
    EXPECT_EQ(text.find(member), text.rfind(member)) << member;
  }
}

}  // namespace
}  // namespace lab
