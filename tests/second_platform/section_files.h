#pragma once

#include <new>

#include "platform/core_utilities.h"

// The maker's functions report a lack of memory by a number; the program has to hear of it by an exception.

inline int OrThrow(int result) {
  if (result == kNoMemory) throw std::bad_alloc();
  return result;
}

inline int KLIBCFileEnumSection(const char* path, KLIBCSzList** list) {
  return OrThrow(ReadSectionNames(path, list));
}

inline int KLIBCFileGetSection(const char* path, const char* name, KLIBCSzHash** table) {
  return OrThrow(ReadSectionEntries(path, name, table));
}
