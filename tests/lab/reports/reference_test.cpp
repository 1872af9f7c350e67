#include "lab/reports/reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lab/household/findings.h"
#include "lab/household/message_kinds.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

using ::testing::HasSubstr;

TEST(FindingsReference, IsWhatTheDocumentationHas) {
  EXPECT_EQ(lab_test::ReadFile(KELP_SOURCE "/docs/findings.md"), FindingsReference());
}

TEST(FindingsReference, TellsEveryKind) {
  const std::string text = FindingsReference();
  for (const FindingKind& kind : FindingKinds()) {
    EXPECT_THAT(text, HasSubstr("### `" + std::string(kind.id) + "`\n\n" + std::string(kind.title)));
  }
}

TEST(MessagesReference, IsWhatTheDocumentationHas) {
  EXPECT_EQ(lab_test::ReadFile(KELP_SOURCE "/docs/messages.md"), MessagesReference());
}

TEST(MessagesReference, TellsEveryMessage) {
  const std::string text = MessagesReference();
  for (const MessageKind& kind : MessageKinds()) {
    EXPECT_THAT(text, HasSubstr("## " + std::to_string(kind.number) + "\n\n`" + std::string(kind.format)));
  }
}

}  // namespace
}  // namespace lab
