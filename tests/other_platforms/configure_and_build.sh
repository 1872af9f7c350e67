#!/usr/bin/env bash
# Usage: configure_and_build.sh SOURCES BUILD PLATFORM
#
# Builds the program alone, from SOURCES in BUILD, over the platform library in PLATFORM. The environment says how, as the
# CMakeLists.txt beside this sets it.
set -euo pipefail
# A folder that another checkout or compiler was configured for is no use.
cache=$2/CMakeCache.txt
if [ -e "$cache" ] && ! { grep -qxF "CMAKE_CXX_COMPILER:STRING=$CXX" "$cache" &&
  grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$1" "$cache" && grep -qxF "CMAKE_CACHEFILE_DIR:INTERNAL=$2" "$cache"; }; then
  rm -rf -- "$2"
fi
"$CMAKE" -S "$1" -B "$2" -G "$GENERATOR" -DKELP_PLATFORM="$3" -DKELP_HOST_TOOLS=OFF -DCMAKE_BUILD_TYPE="$BUILD_TYPE" \
  -DCMAKE_CXX_COMPILER:STRING="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS_OF_TREE" -DCMAKE_CXX_COMPILER_LAUNCHER="$LAUNCHER" \
  -DKELP_SANITIZE="$SANITIZE" -DKELP_WERROR=ON
"$CMAKE" --build "$2" --parallel
