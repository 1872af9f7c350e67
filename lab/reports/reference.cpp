#include "lab/reports/reference.h"

#include <string_view>

#include "lab/household/findings.h"
#include "lab/household/message_kinds.h"

namespace lab {
namespace {

void AddFindings(std::string& text, Severity severity) {
  for (const FindingKind& kind : FindingKinds()) {
    if (kind.severity != severity) continue;
    text.append("\n### `").append(kind.id).append("`\n\n");
    text.append(kind.title).append(".\n\n");
    text.append("- What it means: ").append(kind.meaning).append("\n");
    text.append("- What to do: ").append(kind.remedy).append("\n");
  }
}

}  // namespace

std::string FindingsReference() {
  std::string text =
      "# Findings\n\n"
      "What a household or its security will notice after an upgrade, as `devicelab run` and `devicelab "
      "fleet` name it.\n"
      "This page is what `devicelab describe findings` prints.\n";
  text += "\n## Breaks: a device loses the connection, or a protection is gone\n";
  AddFindings(text, Severity::Breaks);
  text += "\n## Weakens: less secure than before\n";
  AddFindings(text, Severity::Weakens);
  text += "\n## Changes: behaves differently than before\n";
  AddFindings(text, Severity::Changes);
  text += "\n## Notes: nothing changes\n";
  AddFindings(text, Severity::Notes);
  return text;
}

std::string MessagesReference() {
  std::string text =
      "# Messages\n\n"
      "What the program logs, as `kelpwifiupdater:` and the number, then the text. This page is what\n"
      "`devicelab describe messages` prints.\n";
  for (const MessageKind& kind : MessageKinds()) {
    text.append("\n## ").append(std::to_string(kind.number)).append("\n\n");
    text.append("`").append(kind.format).append("`\n\n");
    text.append("- Cause: ").append(kind.cause).append("\n");
    text.append("- Effect on the household: ").append(kind.effect).append("\n");
    text.append("- Remedy: ").append(kind.remedy).append("\n");
  }
  return text;
}

}  // namespace lab
