// What a program costs that links what the program links and does nothing: the loader's work.
#include <json/value.h>

#include <cstddef>  // the next header uses size_t without it

#include <libuboot.h>
#include <sodium/core.h>

namespace {

/// Never called: the linker leaves out a library that nothing needs.
[[gnu::noinline]] void NeedAllLibraries() {
  const Json::Value value;
  uboot_ctx* context = nullptr;
  if (sodium_init() == 0) libuboot_initialize(&context, nullptr);
}

}  // namespace

int main(int argument_count, char* /*arguments*/[]) {
  if (argument_count > 1) NeedAllLibraries();
}
