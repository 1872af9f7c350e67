#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lab {

// The numbers that the lab itself looks for.
inline constexpr int kMeshRoleUnreadable = 140;
inline constexpr int kDocumentsAreThere = 225;
inline constexpr int kMigrationBegun = 229;
inline constexpr int kCannotDecode = 575;
inline constexpr int kCannotOpen = 589;
inline constexpr int kUSB3Unreadable = 896;
inline constexpr int kUpdateFailed = 954;

/// What one of the program's log messages tells the people who support a household.
struct MessageKind {
  /// By which support searches: "kelpwifiupdater:760".
  int number;
  /// As the program formats it, with "%s" and "%d" for what differs.
  std::string_view format;
  /// Why the program says it.
  std::string_view cause;
  /// What the household notices.
  std::string_view effect;
  /// What to do about it.
  std::string_view remedy;
};

/// All messages, by their numbers.
const std::vector<MessageKind>& MessageKinds();

/// The message of that number, null where the program has none.
const MessageKind* FindMessageKind(int number);

/// What stands in `text` (a logged message behind its number) for the format's first "%s": the unknown word
/// of 760, the stored text of 589. Empty where the format has none or the text is not of this kind.
std::string MessageArgument(const MessageKind& kind, std::string_view text);

}  // namespace lab
