#!/usr/bin/env bash
# Usage: moved_platform_test.sh SOURCES FOLDER PROGRAM
#
# Moves src/platform out of a copy of the tree, builds that with -DKELP_PLATFORM, and compares: it is PROGRAM again.
set -euo pipefail
sources=$1 folder=$2 program=$3
tree=$folder/tree
platform="$folder/the maker's library"

# Times are kept, so that only what has changed is compiled again.
mkdir -p -- "$folder"
rm -rf -- "$tree" "$platform"
mkdir -- "$tree"
cp -a -- "$sources"/{CMakeLists.txt,cmake,src,docs} "$tree"
[ ! -d "$sources/packaging" ] || cp -a -- "$sources/packaging" "$tree"
mv -- "$tree/src/platform" "$platform"

"$(dirname -- "$0")/configure_and_build.sh" "$tree" "$folder/build" "$platform"

# Where somebody debugs, the places of the sources are in the program; what runs is the same.
for built in "$program" "$folder/build/kelpwifiupdater"; do
  strip -R .note.gnu.build-id -o "$folder/$(basename -- "$(dirname -- "$built")").stripped" "$built"
done
cmp -- "$folder/$(basename -- "$(dirname -- "$program")").stripped" "$folder/build.stripped"
