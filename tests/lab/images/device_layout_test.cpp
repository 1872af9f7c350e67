#include "lab/images/device_layout.h"

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

class DeviceLayouts : public lab_test::LaidImages {};

TEST_F(DeviceLayouts, AreNotLaidOverWhatTheLabPutThere) {
  PrivateRoot device;
  device.ProvideLink("/lib", "usr/lib");
  device.ProvideFile("/usr/sbin/program");
  for (const std::string& entries :
       {TarEntry("lib/x", '0', 0644, ""), TarEntry("lib", '5', 0755, ""), TarEntry("lib", '2', 0777, "", "x"),
        TarEntry("usr/sbin/program", '0', 0755, ""), TarEntry("tmp", '2', 0777, "", "var")}) {
    DeviceLayout layout(device, limits_);
    EXPECT_THROW(LayImage(layout, Archive(entries + TarEnd())), OccupiedPlace);
  }
  DeviceLayout layout(device, limits_);
  LayImage(layout, Archive(TarEntry("etc", '5', 0750, "") + TarEntry("etc/x", '0', 0644, "x") + TarEnd()));
  EXPECT_EQ(device.Snapshot(), (Tree{{"/etc", Folder(0750)}, {"/etc/x", File("x")}}));
}

TEST_F(DeviceLayouts, OverlaysReplaceFilesAndLinks) {
  folder_.Write("image/etc/a", "old");
  folder_.Write("image/etc/stays", "stays");
  fs::create_symlink("/etc/stays", Image() / "etc/link");
  PrivateRoot device;
  DeviceLayout layout(device, limits_);
  LayImage(layout, Image());
  layout.BeginOverlay();
  layout.AddFile("/etc/a", 0600, "new");
  layout.AddFile("/etc/link", 0644, "no link");
  layout.AddDirectory("/etc", 0700);
  layout.AddFile("/usr/new", 0644, "");
  EXPECT_EQ(device.Snapshot(), (Tree{{"/etc", Folder(0700)},
                                     {"/etc/a", File("new", 0600)},
                                     {"/etc/link", File("no link")},
                                     {"/etc/stays", File("stays")},
                                     {"/usr", Folder()},
                                     {"/usr/new", File("")}}));
  EXPECT_THROW(layout.AddFile("/etc/a", 0600, "again"), UnusableImage);
  EXPECT_THROW(layout.AddFile("/usr", 0600, ""), UnusableImage);
  layout.BeginOverlay();
  layout.AddLink("/etc/a", "stays");
  EXPECT_EQ(device.Snapshot().at("/etc/a").kind, Entry::Kind::Link);
  layout.BeginOverlay();
  EXPECT_THROW(layout.AddFile("/etc/a/b", 0600, ""), UnusableImage);
}

}  // namespace
}  // namespace lab
