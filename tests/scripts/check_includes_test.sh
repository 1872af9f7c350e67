#!/usr/bin/env bash
# Usage: check_includes_test.sh SCRIPT
#
# Lets scripts/check-includes look at small trees: each include that breaks a rule of the house has to be found, with its
# file and line, and none that breaks none.
set -euo pipefail
script=$1
tree=$(mktemp -d)
trap 'rm -rf -- "$tree"' EXIT
failed=0

# look FILE INCLUDE...: makes a tree of that file alone and lets the script look at it.
look() {
  local file=$tree/$1
  shift
  rm -rf -- "${tree:?}"/*
  mkdir -p -- "$(dirname -- "$file")"
  printf '#pragma once\n' >"$file"
  printf '#include %s\n' "$@" >>"$file"
  status=0
  said=$("$script" "$tree" 2>&1) || status=$?
}

fine() {
  look "$@"
  [[ $status == 0 && -z $said ]] || {
    printf 'should be fine: %s\n%s\n' "$*" "$said"
    failed=1
  }
}

# breaks REASON FILE INCLUDE: the include stands on the file's second line.
breaks() {
  local reason=$1
  shift
  look "$@"
  [[ $status != 0 && $said == "$1:2: #include $2: $reason" ]] || {
    printf 'should break the rule "%s": %s\n%s (status %s)\n' "$reason" "$*" "$said" "$status"
    failed=1
  }
}

# One way through the rooms of the program.
fine src/cli/main.cpp '"cli/console.h"' '"migration/a.h"' '"builders/a.h"' '"legacy/a.h"' '"base/log.h"' '<json/value.h>'
fine src/legacy/a.cpp '"platform/sdk_utils.h"' '"platform/records/country_code.h"' '"base/log.h"' '<boost/describe.hpp>'
fine src/platform/stand_in/a.cpp '"platform/stand_in/text/b.h"' '"base/log.h"'
breaks 'src/base stands below src/platform' src/base/log.cpp '"platform/exceptions.h"'
breaks 'src/base stands below src/platform' src/base/log.cpp '  "platform/exceptions.h"'
breaks 'src/platform stands below src/legacy' src/platform/stand_in/a.cpp '"legacy/vocabulary.h"'
breaks 'src/legacy stands below src/builders' src/legacy/a.h '"builders/misc_setting.h"'
breaks 'src/builders stands below src/migration' src/builders/a.h '"migration/document_paths.h"'
breaks 'src/migration stands below src/cli' src/migration/a.cpp '"cli/console.h"'
breaks 'src/new has no place in the order of the rooms, which stands in scripts/check-includes' \
  src/new/a.cpp '"base/log.h"'

# The program stands on its own.
breaks 'src/ stands on its own' src/base/log.cpp '"lab/runs/outcome.h"'
breaks 'src/ stands on its own' src/cli/main.cpp '"tests/support/log_lines.h"'
fine lab/sweeps/a.cpp '"base/log.h"' '"platform/cipher.h"'

# Of the platform only the contract is known, and the contract knows only itself.
fine src/platform/json_util.h '<json/value.h>' '"platform/mac_address.h"' '"platform/records/mac_filter.h"'
fine tests/platform/a_test.cpp '"platform/stand_in/json/json_text.h"'
for file in src/legacy/a.cpp src/base/b.h lab/sweeps/a.cpp bench/a.cpp fuzz/a.cpp tests/legacy/a_test.cpp; do
  look "$file" '"platform/stand_in/json/json_text.h"'
  [[ $status != 0 && $said == *"$file:2: "*': no header of the contract' ]] || {
    printf 'should not know the stand-in: %s\n%s\n' "$file" "$said"
    failed=1
  }
done
breaks 'the contract knows nothing of what stands behind it' src/platform/cipher.h '"platform/stand_in/text/b.h"'
breaks 'the contract knows nothing of what stands behind it' src/platform/records/a.h '"platform/stand_in/text/b.h"'
breaks 'a header of the contract stands on its own' src/platform/exceptions.h '"base/format_text.h"'

# One way through the rooms of the lab.
fine lab/commands/devicelab.cpp '"lab/images/tree.h"' '"lab/runs/outcome.h"' '"lab/reports/report.h"'
breaks 'lab/images stands below lab/runs' lab/images/tree.cpp '"lab/runs/outcome.h"'
breaks 'lab/runs stands below lab/reports' lab/runs/a.cpp '"lab/reports/report.h"'
breaks 'lab/commands stands beside lab/sweeps' lab/commands/a.cpp '"lab/sweeps/fault.h"'
breaks 'lab/attic has no place in the order of the rooms, which stands in scripts/check-includes' \
  lab/runs/a.cpp '"lab/attic/a.h"'
breaks 'lab/ knows nothing of tests/' lab/runs/a.cpp '"tests/support/log_lines.h"'

# No way around by another spelling.
breaks 'to be written with its room in front' src/base/log.cpp '"format_text.h"'
breaks 'to be written with its room in front' src/base/log.cpp '"../platform/cipher.h"'
breaks 'to be written in quotation marks' src/cli/main.cpp '<cli/console.h>'
breaks 'to be written without src/' tests/legacy/a_test.cpp '"src/legacy/vocabulary.h"'

[ $failed = 0 ] && printf 'every rule holds\n'
exit $failed
