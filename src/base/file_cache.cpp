#include "base/file_cache.h"

namespace KELP::Wifi {
namespace {

bool in_scope = false;
std::uint64_t epoch = kNoFileCache;

}  // namespace

FileCacheScope::FileCacheScope() noexcept {
  in_scope = true;
  ++epoch;
}

FileCacheScope::~FileCacheScope() {
  in_scope = false;
}

void InvalidateFileCache() noexcept {
  ++epoch;
}

std::uint64_t FileCacheEpoch() noexcept {
  return in_scope ? epoch : kNoFileCache;
}

}  // namespace KELP::Wifi
