#include "lab/page/page_file.h"

#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

#include "base/atomic_file.h"

namespace lab::page {

namespace fs = std::filesystem;

namespace {

/// The file itself, where a link stands there.
fs::path Target(const fs::path& file) {
  return fs::is_symlink(file) ? fs::weakly_canonical(file) : fs::absolute(file);
}

[[noreturn]] void Refuse(const fs::path& file, const std::string& reason) {
  throw std::runtime_error("cannot write the page " + file.native() + ": " + reason);
}

}  // namespace

void RequirePageFile(const fs::path& file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (fs::exists(status) && !fs::is_regular_file(status)) Refuse(file, "that is no file");
  if (!file.has_filename()) Refuse(file, "that names no file");
  const fs::path folder = Target(file).parent_path();
  if (::access(folder.c_str(), W_OK | X_OK) != 0) Refuse(file, std::generic_category().message(errno));
}

void WritePageFile(const fs::path& file, std::string_view html) {
  RequirePageFile(file);
  try {
    KELP::Wifi::WriteFileAtomically(Target(file).native(), html);
  } catch (const std::system_error& error) {
    Refuse(file, error.code().message());
  }
}

}  // namespace lab::page
