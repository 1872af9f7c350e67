// Runs a target on every file of its corpus folder, in the order of their names: what fuzzing once found
// stays tested in the ordinary suite.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" [[gnu::weak]] int LLVMFuzzerInitialize(int* argument_count, char*** arguments);

namespace {

std::vector<std::uint8_t> ReadInput(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

int main(int argument_count, char* arguments[]) {
  if (argument_count < 2) {
    std::fprintf(stderr, "Usage: %s FOLDER_OR_FILE...\n", arguments[0]);
    return 1;
  }
  // Read before the target sees a path: it may live on a device of its own from then on.
  std::vector<std::filesystem::path> paths;
  for (int i = 1; i < argument_count; ++i) {
    if (std::filesystem::is_directory(arguments[i])) {
      for (const auto& entry : std::filesystem::directory_iterator(arguments[i]))
        paths.push_back(entry.path());
    } else {
      paths.emplace_back(arguments[i]);
    }
  }
  std::sort(paths.begin(), paths.end());
  if (paths.empty()) {
    std::fprintf(stderr, "no inputs\n");
    return 1;
  }

  if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argument_count, &arguments);
  for (const auto& path : paths) {
    std::printf("%s\n", path.filename().c_str());
    std::fflush(stdout);  // so that the last line names the input that ends the run
    const std::vector<std::uint8_t> input = ReadInput(path);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::printf("%zu inputs\n", paths.size());
  return 0;
}
