#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace lab::fleets {

/// A digest by which devices are told apart at little memory.
using DeviceKey = std::uint64_t;
DeviceKey KeyOf(std::string_view image, std::string_view from);

/// A set of such keys, a few bytes a key.
class KeySet {
 public:
  /// Gives whether it was not yet there.
  bool Insert(DeviceKey key);
  bool Has(DeviceKey key) const;
  std::size_t Size() const { return size_; }

 private:
  std::size_t PlaceOf(DeviceKey key) const;

  std::vector<DeviceKey> places_;  // a power of two; 0 is none
  std::size_t size_ = 0;
};

}  // namespace lab::fleets
