#pragma once

#include <filesystem>

#include "lab/images/device_layout.h"
#include "lab/images/private_root.h"

namespace lab {

/// Lays out what an image holds: a folder that mirrors a device's files, or a tar archive of one (plain,
/// gzip, xz or zstd). It is only read, entry by entry; nothing is unpacked elsewhere. Sockets are left out.
///
/// Throws UnusableImage, with the image's name before the reason, for what is neither, cannot be read, is
/// torn, or holds what no backup of a device does: devices, FIFOs, names and links that lead out of it, two
/// entries of one name, more than the layout has room for. Throws as DeviceLayout does.
void LayImage(DeviceLayout& layout, const std::filesystem::path& image);

/// A device of its own with what an image holds, and with the folders that every device has. Throws as
/// LayImage.
PrivateRoot DeviceOf(const std::filesystem::path& image, const ImageLimits& limits = {});

// The two kinds, for LayImage. They throw UnusableImage without the image's name.

/// `folder` is open, with O_RDONLY.
void LayFolder(DeviceLayout& layout, int folder);

/// `file` is open, at its start.
void LayArchive(DeviceLayout& layout, int file);

}  // namespace lab
