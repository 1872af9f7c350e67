#include "tests/support/temporary_folder.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace lab_test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  std::string path = (fs::temp_directory_path() / "lab_test.XXXXXX").native();
  if (::mkdtemp(path.data()) == nullptr) throw std::system_error(errno, std::generic_category(), path);
  path_ = path;
  fs::permissions(path_, fs::perms(0755));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void TemporaryFolder::Write(std::string_view name, std::string_view bytes) const {
  const fs::path path = path_ / name;
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

lab::PrivateRoot RootWithLongPath(const TemporaryFolder& folder) {
  const auto deep = folder / (std::string(120, 'a') + "/" + std::string(120, 'b'));
  fs::create_directories(deep);
  ::setenv("TMPDIR", deep.c_str(), 1);
  lab::PrivateRoot root;
  ::unsetenv("TMPDIR");
  return root;
}

}  // namespace lab_test
