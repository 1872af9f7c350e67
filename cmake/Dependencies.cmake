# What scripts/setup installs, as targets. The program itself links jsoncpp, and of the others headers only; what its
# platform links, that finds.
find_package(PkgConfig REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)

find_package(Boost 1.77 REQUIRED)

find_path(MAGIC_ENUM_INCLUDE_DIR magic_enum/magic_enum.hpp)
if(NOT MAGIC_ENUM_INCLUDE_DIR)
  # Before its release 0.9.6 the library had its headers one folder higher.
  find_path(MAGIC_ENUM_PARENT_DIR magic_enum.hpp)
  if(NOT MAGIC_ENUM_PARENT_DIR)
    message(FATAL_ERROR "magic_enum is missing. It is headers only: the package libmagicenum-dev of Debian 13 and Ubuntu "
      "24.04 has it, scripts/setup fetches it on Debian 12, and CMAKE_PREFIX_PATH may name where else it is.")
  endif()
  set(MAGIC_ENUM_INCLUDE_DIR ${CMAKE_BINARY_DIR}/forwarding)
  file(CONFIGURE OUTPUT ${MAGIC_ENUM_INCLUDE_DIR}/magic_enum/magic_enum.hpp
    CONTENT "#include \"${MAGIC_ENUM_PARENT_DIR}/magic_enum.hpp\"\n")
endif()
add_library(kelp_magic_enum INTERFACE)
target_include_directories(kelp_magic_enum SYSTEM INTERFACE ${MAGIC_ENUM_INCLUDE_DIR})
# The library knows the names of a range of values only, which by default ends below the last countries.
target_compile_definitions(kelp_magic_enum INTERFACE MAGIC_ENUM_RANGE_MAX=255)

if(KELP_HOST_TOOLS)
  pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET GLOBAL libsodium)
  find_package(GTest REQUIRED)
  find_package(CLI11 REQUIRED)
  pkg_check_modules(LIBARCHIVE REQUIRED IMPORTED_TARGET libarchive)
  pkg_check_modules(SECCOMP REQUIRED IMPORTED_TARGET libseccomp)
  pkg_check_modules(ZLIB REQUIRED IMPORTED_TARGET zlib)
endif()
