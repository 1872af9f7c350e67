#include "lab/fleets/key_set.h"

#include <utility>

namespace lab::fleets {
namespace {

constexpr std::size_t kFirstPlaces = 64;

}  // namespace

DeviceKey KeyOf(std::string_view image, std::string_view from) {
  // FNV-1a.
  DeviceKey key = 0xCBF29CE484222325U;
  const auto add = [&key](char byte) { key = (key ^ static_cast<unsigned char>(byte)) * 0x100000001B3U; };
  for (const char byte : image) add(byte);
  add('\0');
  for (const char byte : from) add(byte);
  return key != 0 ? key : 1;
}

bool KeySet::Insert(DeviceKey key) {
  if (4 * (size_ + 1) > 3 * places_.size()) {
    std::vector<DeviceKey> former =
        std::exchange(places_, std::vector<DeviceKey>(places_.empty() ? kFirstPlaces : 2 * places_.size()));
    for (const DeviceKey moved : former) {
      if (moved != 0) places_[PlaceOf(moved)] = moved;
    }
  }
  DeviceKey& place = places_[PlaceOf(key)];
  if (place == key) return false;
  place = key;
  ++size_;
  return true;
}

bool KeySet::Has(DeviceKey key) const {
  return !places_.empty() && places_[PlaceOf(key)] == key;
}

/// Where the key stands, or would.
std::size_t KeySet::PlaceOf(DeviceKey key) const {
  std::size_t place = key & (places_.size() - 1);
  while (places_[place] != 0 && places_[place] != key) place = (place + 1) & (places_.size() - 1);
  return place;
}

}  // namespace lab::fleets
