#pragma once

#include <string>
#include <vector>

namespace fuzz {

/// A device written down as text, in a form in which every byte string is a device and a small change of the
/// text is a small change of the device.
///
/// The first line is the build number that the device is updated from. Then each line
///
///     @file PATH         starts a regular file; the lines up to the next such line are its contents
///     @bare PATH         as @file, but without the newline at the end of the contents
///     @dir PATH          makes a folder
///     @link PATH TARGET  makes a symbolic link; the path ends at the first blank
///     @fifo PATH         makes a FIFO
///
/// PATH is absolute and without "." and ".." components. Lines that stand before the first '@' line, behind
/// one that takes no contents or behind one whose path will not do are passed over; so is what cannot be
/// made.
struct DeviceText {
  struct Item {
    enum class Kind { File, Folder, Link, Fifo };
    Kind kind;
    std::string path;
    std::string text;  // contents or target
  };

  std::string build_number;
  std::vector<Item> items;
};

DeviceText ParseDeviceText(const std::string& text);

/// Makes the items, with their parents, under "/".
void LayOut(const std::vector<DeviceText::Item>& items);

}  // namespace fuzz
