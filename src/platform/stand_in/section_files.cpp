#include "platform/section_files.h"

#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "platform/stand_in/text/parsed_file_cache.h"
#include "platform/stand_in/text/section_text.h"

namespace {

/// Strings one behind the other, each with its NUL: to refill it costs no allocation a string.
class StringSequence {
 public:
  explicit StringSequence(std::size_t capacity) { bytes_.reserve(capacity); }

  void Clear() {
    bytes_.clear();
    starts_.clear();
  }
  void Append(std::string_view text) {
    starts_.push_back(bytes_.size());
    bytes_.append(text.substr(0, text.find('\0'))).push_back('\0');
  }
  std::size_t Size() const { return starts_.size(); }
  const char* operator[](std::size_t index) const { return bytes_.data() + starts_[index]; }

 private:
  std::string bytes_;
  std::vector<std::size_t> starts_;
};

KELP::Wifi::ParsedFileCache<KELP::Wifi::SectionText>& Files() {
  static KELP::Wifi::ParsedFileCache<KELP::Wifi::SectionText> files;
  return files;
}

/// The core utility library reports in numbers; only that memory ran out is no fact about the file.
template <typename Operation>
int NegativeOnFailure(Operation operation) {
  try {
    return static_cast<int>(operation());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return -1;
  }
}

template <typename T>
T* AllocateOrNull(std::size_t capacity) {
  try {
    return new T{StringSequence(capacity)};
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

struct KLIBCSzList {
  StringSequence strings;
};

struct KLIBCSzHash {
  StringSequence keys_and_values;  // each value right behind its key
};

KLIBCSzList* KLIBCSzListAlloc(std::size_t capacity) {
  return AllocateOrNull<KLIBCSzList>(capacity);
}

KLIBCSzHash* KLIBCSzHashAlloc(std::size_t capacity) {
  return AllocateOrNull<KLIBCSzHash>(capacity);
}

void KLIBCSzListFree(KLIBCSzList* list) {
  delete list;
}

void KLIBCSzHashFree(KLIBCSzHash* table) {
  delete table;
}

const char* KLIBCSzListGet(const KLIBCSzList* list, int index) {
  const auto place = static_cast<std::size_t>(index);
  return place < list->strings.Size() ? list->strings[place] : nullptr;
}

const char* KLIBCSzHashGetValue(const KLIBCSzHash* table, const char* key) {
  const StringSequence& strings = table->keys_and_values;
  for (std::size_t place = 0; place < strings.Size(); place += 2) {
    if (std::strcmp(strings[place], key) == 0) return strings[place + 1];
  }
  return nullptr;
}

int KLIBCFileEnumSection(const char* path, KLIBCSzList** list) {
  return NegativeOnFailure([&] {
    StringSequence& strings = (*list)->strings;
    strings.Clear();
    for (const std::string_view name : Files().Get(path).Names()) strings.Append(name);
    return strings.Size();
  });
}

int KLIBCFileGetSection(const char* path, const char* name, KLIBCSzHash** table) {
  return NegativeOnFailure([&] {
    StringSequence& strings = (*table)->keys_and_values;
    strings.Clear();
    Files().Get(path).ForEachEntry(name, [&](const KELP::Wifi::Entry& entry) {
      strings.Append(entry.key);
      strings.Append(entry.value);
    });
    return strings.Size() / 2;
  });
}
