#include "lab/images/private_root.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "lab/runs/in_root.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::TemporaryFolder;

constexpr auto kDirectory = Entry::Kind::Directory;

/// What `operation` throws.
template <typename Operation>
std::string Thrown(Operation operation) {
  try {
    operation();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "nothing";
}

TEST(PrivateRoot, HasTheUsualFoldersAndNothingOfTheDevice) {
  const PrivateRoot root;
  EXPECT_EQ(ReadTree(root.Path()), (Tree{{"/dev", {kDirectory, 0755, ""}},
                                         {"/etc", {kDirectory, 0755, ""}},
                                         {"/tmp", {kDirectory, 01777, ""}},
                                         {"/var", {kDirectory, 0755, ""}},
                                         {"/var/lock", {kDirectory, 0755, ""}}}));
  EXPECT_EQ(root.Snapshot(), Tree{});
}

TEST(PrivateRoot, CopiesAnImageAndLeavesItAlone) {
  const TemporaryFolder image;
  image.Write("etc/config", "a=1\n");
  image.Write("usr/kelp/key", "secret");
  fs::permissions(image / "usr/kelp/key", fs::perms(0600));
  fs::create_symlink("/usr/kelp/key", image / "etc/key");
  const Tree before = ReadTree(image.Path());

  PrivateRoot root(image.Path());
  EXPECT_EQ(root.Snapshot(), before);
  root.Write("/etc/config", "b=2\n");
  root.Write("/etc/key", "other");
  root.Remove("/usr");

  EXPECT_EQ(ReadTree(image.Path()), before);
}

TEST(PrivateRoot, AddsTheUsualFoldersWhereAnImageHasNone) {
  const TemporaryFolder image;
  fs::create_directories(image / "var/run");
  fs::create_symlink("run", image / "var/lock");
  const PrivateRoot root(image.Path());
  EXPECT_TRUE(fs::is_directory(root.Path() / "dev"));
  EXPECT_TRUE(fs::is_symlink(root.Path() / "var/lock"));
}

TEST(PrivateRoot, SaysWhichImageIsMissing) {
  EXPECT_EQ(Thrown([] { PrivateRoot("/no/image"); }),
            "/no/image cannot be opened: No such file or directory");
}

TEST(PrivateRoot, GoesAwayWithTheObject) {
  fs::path path;
  {
    PrivateRoot root;
    path = root.Path();
    root.Write("/locked/file", "x", 0);
    root.SetMode("/locked", 0);
    EXPECT_TRUE(fs::exists(path));
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(PrivateRoot, GoesAwayWhenCopyingTheImageFails) {
  const TemporaryFolder temporary;
  const TemporaryFolder image;
  ::setenv("TMPDIR", temporary.Path().c_str(), 1);
  // A folder where the root needs one of its own cannot be a file.
  image.Write("var", "");
  EXPECT_EQ(Thrown([&] { PrivateRoot root(image.Path()); }), "find /var/: Not a directory");
  ::unsetenv("TMPDIR");
  EXPECT_TRUE(fs::is_empty(temporary.Path()));
}

TEST(PrivateRoot, Moves) {
  PrivateRoot first;
  first.Write("/etc/a", "1");
  const fs::path path = first.Path();
  {
    const PrivateRoot second(std::move(first));
    EXPECT_EQ(second.Read("/etc/a"), "1");
    EXPECT_EQ(second.Path(), path);
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(PrivateRoot, LiesWhereTheEnvironmentSays) {
  const TemporaryFolder temporary;
  ::setenv("TMPDIR", temporary.Path().c_str(), 1);
  EXPECT_EQ(PrivateRoot().Path().parent_path(), temporary.Path());
  ::setenv("TMPDIR", "/no/such/folder", 1);
  EXPECT_EQ(Thrown([] { PrivateRoot root; }),
            "make a temporary folder in /no/such/folder: No such file or directory");
  ::setenv("TMPDIR", "", 1);
  EXPECT_EQ(PrivateRoot().Path().parent_path(), "/tmp");
  ::unsetenv("TMPDIR");
  EXPECT_EQ(PrivateRoot().Path().parent_path(), "/tmp");
}

TEST(PrivateRoot, WritesWithTheModeAskedFor) {
  PrivateRoot root;
  const mode_t mask = ::umask(0777);
  root.Write("/a/b/file", "one");
  root.Write("/a/open", "two", 0666);
  root.MakeDirectory("/a/folder", 0770);
  root.MakeFifo("/a/fifo", 0622);
  ::umask(mask);
  EXPECT_EQ(root.Snapshot(), (Tree{{"/a", {kDirectory, 0755, ""}},
                                   {"/a/b", {kDirectory, 0755, ""}},
                                   {"/a/b/file", {Entry::Kind::File, 0644, "one"}},
                                   {"/a/open", {Entry::Kind::File, 0666, "two"}},
                                   {"/a/folder", {kDirectory, 0770, ""}},
                                   {"/a/fifo", {Entry::Kind::Other, 0622, ""}}}));
}

TEST(PrivateRoot, ReplacesBytesAndMode) {
  PrivateRoot root;
  root.Write("/etc/file", "a long text", 0);
  root.Write("/etc/file", std::string("s\0", 2), 0600);
  EXPECT_EQ(root.Read("/etc/file"), std::string("s\0", 2));
  EXPECT_EQ(root.Snapshot().at("/etc/file").mode, 0600U);
  root.MakeDirectory("/etc", 0700);
  EXPECT_EQ(root.Snapshot().at("/etc").mode, 0700U);
}

TEST(PrivateRoot, FollowsLinksAsOnTheDevice) {
  PrivateRoot root;
  root.MakeDirectory("/data");
  root.Link("/absolute", "/data");
  root.Link("/climbing", "../../../../data");
  root.Link("/host", "/etc/passwd");
  root.Write("/absolute/file", "1");
  root.Write("/climbing/other", "2");
  root.Write("/host", "3");
  EXPECT_EQ(root.Read("/data/file"), "1");
  EXPECT_EQ(root.Read("/data/other"), "2");
  EXPECT_EQ(root.Read("/etc/passwd"), "3");
}

TEST(PrivateRoot, KnowsEveryKindOfEntry) {
  PrivateRoot root;
  root.Link("/dangling", "/nowhere");
  root.Link("/loop", "/loop");
  root.Write("/file", "");
  EXPECT_TRUE(root.Exists("/dangling"));
  EXPECT_TRUE(root.Exists("/loop"));
  EXPECT_TRUE(root.Exists("/file"));
  EXPECT_TRUE(root.Exists("/"));
  EXPECT_FALSE(root.Exists("/nowhere"));
  EXPECT_FALSE(root.Exists("/file/below"));
}

TEST(PrivateRoot, RemovesFoldersButNotWhatLinksLeadTo) {
  PrivateRoot root;
  root.Write("/data/file", "1");
  root.Link("/link", "/data");
  root.Remove("/link");
  EXPECT_EQ(root.Read("/data/file"), "1");
  root.SetMode("/data", 0);
  root.Remove("/data");
  EXPECT_FALSE(root.Exists("/data"));
  EXPECT_EQ(Thrown([&] { root.Remove("/data"); }), "remove /data: No such file or directory");
}

TEST(PrivateRoot, TellsWhatCannotBeRead) {
  PrivateRoot root;
  root.MakeFifo("/fifo");
  EXPECT_EQ(Thrown([&] { root.Read("/nothing"); }), "open /nothing: No such file or directory");
  EXPECT_EQ(Thrown([&] { root.Read("/fifo"); }), "not a regular file: /fifo");
  EXPECT_EQ(Thrown([&] { root.Read("/etc"); }), "not a regular file: /etc");
}

TEST(PrivateRoot, TellsWhatCannotBeMade) {
  PrivateRoot root;
  root.MakeFifo("/fifo");
  root.Link("/link", "/fifo");
  root.Write("/file", "");
  EXPECT_EQ(Thrown([&] { root.Write("/etc", ""); }), "write /etc: Is a directory");
  EXPECT_EQ(Thrown([&] { root.Write("/fifo", ""); }), "write /fifo: No such device or address");
  EXPECT_EQ(Thrown([&] { root.Write("/file/below", ""); }), "find /file/: Not a directory");
  EXPECT_EQ(Thrown([&] { root.Link("/file", "x"); }), "make /file: File exists");
  EXPECT_EQ(Thrown([&] { root.MakeFifo("/file"); }), "make /file: File exists");
  EXPECT_EQ(Thrown([&] { root.MakeDirectory("/file"); }), "make /file: File exists");
  EXPECT_EQ(Thrown([&] { root.SetMode("/link", 0); }), "a link has no mode of its own: /link");
  EXPECT_EQ(Thrown([&] { root.SetMode("/nothing", 0); }),
            "set the mode of /nothing: No such file or directory");
}

TEST(PrivateRoot, TakesAbsolutePathsOfEntriesOnly) {
  PrivateRoot root;
  for (const char* path : {"", "/", "//", "etc/file"}) {
    EXPECT_THROW(root.Write(path, ""), std::invalid_argument) << path;
  }
}

TEST(PrivateRoot, WorksFromInside) {
  PrivateRoot root;
  root.Write("/etc/before", "1");
  const InRoot inside(root);
  root.Write("/etc/during", "2");
  EXPECT_EQ(root.Read("/etc/before"), "1");
  EXPECT_EQ(lab_test::ReadFile("/etc/during"), "2");
  EXPECT_EQ(root.Snapshot().size(), 2U);
}

TEST(PrivateRoot, LeavesProvidedEntriesOutOfSnapshotsUntilTheyChange) {
  PrivateRoot root;
  root.ProvideDirectory("/usr/lib");
  root.ProvideFile("/usr/sbin/program");
  root.ProvideLink("/lib", "usr/lib");
  EXPECT_EQ(root.Snapshot(), Tree{});
  EXPECT_TRUE(root.Exists("/usr/sbin/program"));

  root.SetMode("/tmp", 0700);
  root.Write("/usr/sbin/program", "changed", 0755);
  root.Write("/usr/lib/new", "");
  EXPECT_EQ(root.Snapshot(), (Tree{{"/tmp", {kDirectory, 0700, ""}},
                                   {"/usr/sbin/program", {Entry::Kind::File, 0755, "changed"}},
                                   {"/usr/lib/new", {Entry::Kind::File, 0644, ""}}}));
}

TEST(PrivateRoot, ProvidesNothingWhereSomethingStands) {
  PrivateRoot root;
  root.Write("/usr/lib", "a file");
  root.ProvideDirectory("/usr/lib");
  root.ProvideLink("/usr/lib", "x");
  EXPECT_EQ(root.Read("/usr/lib"), "a file");
  EXPECT_TRUE(root.Snapshot().contains("/usr/lib"));
}

}  // namespace
}  // namespace lab
