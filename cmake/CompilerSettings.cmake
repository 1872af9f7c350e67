# Every target links kelp_compiler_settings: the warnings, the hardening that distributions use, and the
# sanitizers when they are asked for.
include(CheckCXXSourceCompiles)
include(CheckPIESupported)
check_pie_supported()

add_library(kelp_compiler_settings INTERFACE)

target_compile_options(kelp_compiler_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wformat=2 -Wno-format-nonliteral -Wcast-qual -Wundef
  $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op -Wduplicated-cond -Wduplicated-branches>
  # On 32-bit ARM, GCC tells of a change of its own between releases 6 and 7.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<EQUAL:${CMAKE_SIZEOF_VOID_P},4>>:-Wno-psabi>
  $<$<BOOL:${KELP_WERROR}>:-Werror>)

if(KELP_SANITIZE)
  target_compile_options(kelp_compiler_settings INTERFACE
    -fsanitize=${KELP_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kelp_compiler_settings INTERFACE -fsanitize=${KELP_SANITIZE})
else()
  target_compile_options(kelp_compiler_settings INTERFACE -fstack-protector-strong)
  # A level that the compiler or the integrator's flags already have is theirs to choose, unless it is lower.
  set(CMAKE_REQUIRED_FLAGS -O2)
  check_cxx_source_compiles("
    #if !defined(_FORTIFY_SOURCE) || _FORTIFY_SOURCE < 2
    #error lower
    #endif
    int main() { return 0; }" KELP_ALREADY_FORTIFIED)
  unset(CMAKE_REQUIRED_FLAGS)
  if(NOT KELP_ALREADY_FORTIFIED)
    target_compile_options(kelp_compiler_settings INTERFACE
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
  endif()
endif()

target_compile_options(kelp_compiler_settings INTERFACE -ffunction-sections -fdata-sections)
# As needed: what a library was linked with (libz) or a compiler adds on its own (libm) is nothing to load at every run.
target_link_options(kelp_compiler_settings INTERFACE -Wl,-z,relro,-z,now -Wl,--as-needed -Wl,--gc-sections -Wl,-O1)
