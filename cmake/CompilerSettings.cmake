# Every target links kelp_compiler_settings: the warnings, the hardening that distributions use, and the
# sanitizers when they are asked for.
include(CheckPIESupported)
check_pie_supported()

add_library(kelp_compiler_settings INTERFACE)

target_compile_options(kelp_compiler_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
  -Woverloaded-virtual -Wformat=2 -Wno-format-nonliteral -Wcast-qual -Wundef
  $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op -Wduplicated-cond -Wduplicated-branches>
  $<$<BOOL:${KELP_WERROR}>:-Werror>)

if(KELP_SANITIZE)
  target_compile_options(kelp_compiler_settings INTERFACE
    -fsanitize=${KELP_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kelp_compiler_settings INTERFACE -fsanitize=${KELP_SANITIZE})
else()
  target_compile_options(kelp_compiler_settings INTERFACE
    -fstack-protector-strong
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()

target_compile_options(kelp_compiler_settings INTERFACE -ffunction-sections -fdata-sections)
target_link_options(kelp_compiler_settings INTERFACE -Wl,-z,relro,-z,now -Wl,--gc-sections -Wl,-O1)
