#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace testing_support {

/// While this lives the operations below the migrations, the platform's and the file system library's, fail
/// as it says, and are noted; the linker puts this between the program and them. One at a time.
class FailingPlatform {
 public:
  FailingPlatform();
  FailingPlatform(const FailingPlatform&) = delete;
  FailingPlatform& operator=(const FailingPlatform&) = delete;
  ~FailingPlatform();

  static FailingPlatform* Current();

  // Section files
  bool list_allocation_fails = false;
  bool table_allocation_fails = false;
  std::optional<int> section_count;          // the result of counting the sections of a file
  std::set<std::string> sections_that_fail;  // loading them returns `section_result`
  int section_result = -1;
  int lists = 0;  // allocated and not released
  int tables = 0;
  std::size_t list_capacity = 0;
  std::size_t table_capacity = 0;

  // What throws something that is no std::exception
  std::string key_that_throws;       // of the information store, or of a key=value file
  std::string document_that_throws;  // the path of a JSON file
  bool legacy_reads_throw = false;
  bool model_throws = false;

  // Secrets: what the cipher answers, and what was wiped of the buffer that it wrote to
  const char* decrypted = nullptr;
  std::size_t wiped = 0;  // bytes, from its beginning on; 0 unless the text was still there

  // The boot environment's answer
  std::optional<int> usb3_disabled;

  // Storage
  std::string path_that_stays;        // cannot be removed: std::filesystem::filesystem_error, EBUSY
  std::string path_that_goes_before;  // somebody else removes it before the program does
  bool flush_fails = false;           // of a directory: std::system_error, EIO

  /// What was saved, flushed, moved and removed, in order: "save PATH", "flush PATH", "rename PATH",
  /// "remove PATH".
  std::vector<std::string> steps;
  /// What was asked, in order: "PATH KEY" of a key=value file, "usb3" of the boot environment.
  std::vector<std::string> questions;
};

}  // namespace testing_support
