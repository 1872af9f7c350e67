#include "lab/images/tree_builder.h"

#include <filesystem>
#include <string>

#include "lab/images/image.h"
#include "lab/images/tar_text.h"
#include "tests/lab/images/laid_images.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::File;
using lab_test::Folder;

class TreeBuilders : public lab_test::LaidImages {};

TEST_F(TreeBuilders, TreesAreNotWrittenOverWhatTheLabPutThere) {
  PrivateRoot device;
  device.ProvideLink("/lib", "usr/lib");
  device.ProvideFile("/usr/sbin/program");
  for (const std::string& entries :
       {TarEntry("lib/x", '0', 0644, ""), TarEntry("lib", '5', 0755, ""), TarEntry("lib", '2', 0777, "", "x"),
        TarEntry("usr/sbin/program", '0', 0755, ""), TarEntry("tmp", '2', 0777, "", "var")}) {
    EXPECT_THROW(WriteTree(ReadImage(Archive(entries + TarEnd())), device.Directory()), MountPointConflict);
  }
  const std::string beside = TarEntry("etc", '5', 0750, "") + TarEntry("etc/x", '0', 0644, "x") + TarEnd();
  WriteTree(ReadImage(Archive(beside)), device.Directory());
  EXPECT_EQ(device.Snapshot(), (Tree{{"/etc", Folder(0750)}, {"/etc/x", File("x")}}));
}

TEST_F(TreeBuilders, OverlaysReplaceFilesAndLinks) {
  folder_.Write("image/etc/a", "old");
  folder_.Write("image/etc/stays", "stays");
  fs::create_symlink("/etc/stays", Image() / "etc/link");
  TreeBuilder tree(limits_);
  ReadImage(tree, Image());
  tree.BeginOverlay();
  tree.AddFile("/etc/a", 0600, "new");
  tree.AddFile("/etc/link", 0644, "no link");
  tree.AddDirectory("/etc", 0700);
  tree.AddFile("/usr/new", 0644, "");
  EXPECT_THROW(tree.AddFile("/etc/a", 0600, "again"), UnusableImage);
  EXPECT_THROW(tree.AddFile("/usr", 0600, ""), UnusableImage);
  tree.BeginOverlay();
  tree.AddLink("/etc/a", "stays");
  EXPECT_THROW(tree.AddDirectory("/etc/a", 0700), UnusableImage);
  tree.BeginOverlay();
  EXPECT_THROW(tree.AddFile("/etc/a/b", 0600, ""), UnusableImage);
  tree.AddFile("/etc/b", 0600, "beside a directory that only the image names");
  EXPECT_EQ(tree.Take(), (Tree{{"/etc", Folder(0700)},
                               {"/etc/a", {Entry::Kind::Link, 0777, "stays"}},
                               {"/etc/b", File("beside a directory that only the image names", 0600)},
                               {"/etc/link", File("no link")},
                               {"/etc/stays", File("stays")},
                               {"/usr", Folder()},
                               {"/usr/new", File("")}}));
}

}  // namespace
}  // namespace lab
