#!/usr/bin/env bash
# Usage: bad_fit_test.sh SOURCES BUILD
#
# A platform that does not fit is told by the name of what is missing, in the words that docs/integration.md has. BUILD is
# where the program was built over the second platform.
set -euo pipefail
sources=$1 build=$2
second=$sources/tests/second_platform
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT
failed=0

# expect WORDS FILE: they stand in the file, whatever the lines are broken at, and the part that is the same for every
# platform in the documentation.
expect() {
  local words=$1 said
  said=$(tr -s '\n ' '  ' <"$2")
  [[ $said == *"$words"* ]] || {
    printf 'missing: %s\nin:\n%s\n' "$words" "$said"
    failed=1
  }
}
documented() {
  grep -qF -- "$1" "$sources/docs/integration.md" || {
    printf 'docs/integration.md does not have: %s\n' "$1"
    failed=1
  }
}

# configure PLATFORM: has to fail.
configure() {
  if "$CMAKE" -S "$sources" -B "$work/build" -G "$GENERATOR" -DKELP_PLATFORM="$1" -DKELP_HOST_TOOLS=OFF \
    -DCMAKE_CXX_COMPILER="$CXX" >"$work/said" 2>&1; then
    printf 'could be configured: %s\n' "$1"
    failed=1
  fi
}

platform=$work/lib
mkdir -- "$platform"
configure "$platform"
expect "KELP_PLATFORM: there is no CMakeLists.txt in $platform" "$work/said"
documented 'KELP_PLATFORM: there is no CMakeLists.txt in'

cp -r -- "$second"/. "$platform"
rm -- "$platform/wifi_utils.h" "$platform/records/wps_setting.h"
configure "$platform"
expect "KELP_PLATFORM: missing in $platform: records/wps_setting.h wifi_utils.h" "$work/said"
documented 'KELP_PLATFORM: missing in'

cp -r -- "$second"/. "$platform"
echo 'add_library(wifi INTERFACE)' >"$platform/CMakeLists.txt"
configure "$platform"
expect "KELP_PLATFORM: $platform/CMakeLists.txt does not define the target kelp_platform" "$work/said"
documented 'does not define the target kelp_platform'

# link LIBRARY: as the program is linked.
link() {
  "$CXX" -o "$work/program" "$build"/src/CMakeFiles/kelpwifiupdater.dir/cli/main.cpp.o \
    "$build"/src/libkelp_{cli,migration,builders,legacy}.a "$1" "$build"/src/libkelp_base.a -ljsoncpp
}
library=$build/src/platform/libkelp_platform.a
link "$library"
cp -- "$library" "$work/libless.a"
ar d "$work/libless.a" facts.cpp.o
if link "$work/libless.a" 2>"$work/said"; then
  echo 'could be linked without the key-value operations'
  failed=1
fi
for operation in SDKUtils::FileGetKeyValue SDKUtils::InfoGetKeyValue WifiUtils::GetDefaultWPS_AP_PIN; do
  expect "undefined reference to \`KELP::Wifi::Util::$operation" "$work/said"
done
documented 'undefined reference to `KELP::Wifi::Util::WifiUtils::GetDefaultWPS_AP_PIN'

exit $failed
