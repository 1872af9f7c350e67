# Builds for another machine with a cross compiler of Debian's and a folder that has that machine's libraries and headers
# (scripts/sysroot makes one):
#
#   PKG_CONFIG_SYSROOT_DIR=SYSROOT PKG_CONFIG_LIBDIR=SYSROOT/usr/lib/TRIPLET/pkgconfig:SYSROOT/usr/share/pkgconfig \
#     cmake --toolchain packaging/toolchains/debian-cross.cmake -DKELP_TRIPLET=TRIPLET -DCMAKE_SYSROOT=SYSROOT ...
#
# KELP_TRIPLET is Debian's name of the machine's interface, arm-linux-gnueabihf for instance. With -DKELP_CLANG=ON clang++ is
# taken instead of the triplet's g++.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KELP_TRIPLET KELP_CLANG)
string(REGEX REPLACE "-.*" "" CMAKE_SYSTEM_PROCESSOR "${KELP_TRIPLET}")
set(CMAKE_SYSTEM_NAME Linux)
if(KELP_CLANG)
  set(CMAKE_CXX_COMPILER clang++)
  set(CMAKE_CXX_COMPILER_TARGET ${KELP_TRIPLET})
else()
  set(CMAKE_CXX_COMPILER ${KELP_TRIPLET}-g++)
endif()
set(CMAKE_LIBRARY_ARCHITECTURE ${KELP_TRIPLET})
set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
