#pragma once

#include <filesystem>

#include "lab/images/tree.h"
#include "lab/images/tree_builder.h"

namespace lab {

/// Reads an image: a directory that mirrors a device's files, or a tar archive of one (plain, gzip, xz or
/// zstd). It is only read; nothing is unpacked anywhere. Sockets are left out.
///
/// Throws UnusableImage, with the image's name before the reason, for what is neither, cannot be read, is
/// truncated, or holds what no backup of a device does: devices, FIFOs, names and links that lead out of it,
/// two entries of one name, more than the limits allow.
Tree ReadImage(const std::filesystem::path& image, const ImageLimits& limits = {});

/// The same, into a tree that may have entries already.
void ReadImage(TreeBuilder& tree, const std::filesystem::path& image);

// The two kinds, for ReadImage. They throw UnusableImage without the image's name.

/// `directory` is open, with O_RDONLY.
void ReadDirectory(TreeBuilder& tree, int directory);

/// `file` is open, at its start.
void ReadTar(TreeBuilder& tree, int file);

}  // namespace lab
