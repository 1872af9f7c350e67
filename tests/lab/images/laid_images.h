#pragma once

#include <archive.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "lab/images/tree.h"
#include "lab/images/tree_builder.h"
#include "tests/support/temporary_folder.h"

namespace lab_test {

lab::Entry File(std::string content, mode_t mode = 0644);
lab::Entry Folder(mode_t mode = 0755);

/// Reads images and writes them out in an empty folder, next to another that nothing may reach.
class LaidImages : public ::testing::Test {
 protected:
  LaidImages();
  ~LaidImages() override;

  /// What an empty folder holds after the image was read and written there. That it is the same tree is
  /// checked.
  lab::Tree Laid(const std::filesystem::path& image) const;

  /// Why the image is refused, without its name; "usable" where it is not.
  std::string Refusal(const std::filesystem::path& image) const;

  /// A file with these bytes.
  std::filesystem::path Archive(const std::string& bytes) const;

  /// One with these bytes as a filter of libarchive packs them.
  std::filesystem::path Compressed(const std::string& bytes, int (*add_filter)(archive*)) const;

  /// A folder, empty so far.
  std::filesystem::path Image() const { return folder_ / "image"; }

  TemporaryFolder folder_;
  lab::ImageLimits limits_;

 private:
  lab::Tree outside_;
};

}  // namespace lab_test
