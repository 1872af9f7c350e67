#include "base/file_cache.h"

namespace KELP::Wifi {
namespace {

bool under_way = false;
std::uint64_t stretch = 0;

}  // namespace

FileCacheScope::FileCacheScope() noexcept {
  under_way = true;
  ++stretch;
}

FileCacheScope::~FileCacheScope() {
  under_way = false;
}

void InvalidateFileCache() noexcept {
  ++stretch;
}

std::uint64_t FileCacheEpoch() noexcept {
  return under_way ? stretch : 0;
}

}  // namespace KELP::Wifi
