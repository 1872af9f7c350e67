#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "lab/fleets/key_set.h"
#include "lab/fleets/record.h"
#include "lab/images/descriptor.h"

namespace lab::fleets {

/// Calls `visit` with each line of a file and the place at which it starts; `is_torn` where the last one has
/// no end. Throws std::system_error.
void ForEachLine(int file, const std::string& name,
                 const std::function<void(std::string_view line, std::uintmax_t place, bool is_torn)>& visit);

/// The file that a fleet writes: a record a line. One fleet at a time has it. A new one has mode 0600: names
/// and addresses of households stand in it.
class RecordFile {
 public:
  /// Opens or makes the file and reads what is there; a torn last line is cut off. Throws std::runtime_error
  /// where another fleet has it, or what stands there are no records.
  explicit RecordFile(const std::filesystem::path& path);

  bool Has(std::string_view image, std::string_view from) const { return done_.Has(KeyOf(image, from)); }
  std::size_t Count() const { return done_.Size(); }

  /// Adds a line (without its end) at once. Throws std::system_error where it cannot be written whole; then
  /// the file is as it was.
  void Append(std::string_view line);

 private:
  void ReadLines();

  std::string name_;
  Descriptor file_;
  std::uintmax_t size_ = 0;
  KeySet done_;
};

}  // namespace lab::fleets
