# shellcheck shell=bash
# What is wrong with a boot's report, a line each. Sourced, never run.

# Holds the report of machine $1 with sample $2 against the conditions $3, the result $4, the documents $5 and the text $6.
judge() {
  local machine=$1 sample=$2 conditions=$3 result=$4 documents=$5 text=$6
  local report=$1/report wifi=$1/report/usr/kelp/etc/wifi state=$1/report/usr/kelp/etc/migration
  local expected=tests/end_to_end/expected/$2 word=- seconds path
  seconds=$(cat -- "$report/run/test-boot/seconds")
  [ "$seconds" -le 100 ] || echo "the boot was held up for $seconds seconds"
  [ ! -s "$state/result" ] || read -r word _ <"$state/result"
  [[ $result == any || "|$result|" == *"|$word|"* ]] ||
    echo "the result is \"$(cat -- "$state/result" 2>/dev/null || echo -)\", not $result"
  [ "$documents" != by-result ] || { [ "$word" = migrated ] && documents=all || documents=none; }
  case $documents in
    all) check_migrated ;;
    none)
      for path in "$wifi"/*.json "$wifi"/network.json.*; do [ ! -e "$path" ] || echo "there is ${path##*/}"; done
      [ ! -e "$wifi/legacy" ] || echo "there is an archive"
      ;;
    untouched)
      for path in "$report"/run/test-boot/before/*; do
        cmp -s -- "$path" "$wifi/${path##*/}" || echo "${path##*/} is not what it was before the boot"
      done
      ;;
  esac
  check_nothing_lost
  check_nothing_left
  check_conditions
  grep -hE 'kelp-first-boot(\[[0-9]+\])?: (line |/[^ ]*: )?[0-9]+:|(mkdir|mv|rm|sync|cat|dd): ' \
    "$machine/console" "$report/run/test-boot/log" 2>/dev/null | sort -u | head -n 3 | sed 's/^/a raw line of the shell: /'
  [ -z "$text" ] || grep -qsF -- "$text" "$machine/console" "$report/run/test-boot/log" "$state/result" ||
    echo "nothing says \"$text\""
}

# Members come in no promised order; all values are compared byte by byte, whatever their encoding.
same_document() {
  [ -e "$2" ] && python3 -I - "$@" <<'COMPARE'
import json, sys
texts = [open(path, "rb").read().decode("latin-1") for path in sys.argv[1:]]
try:
    sys.exit(len({json.dumps(json.loads(text), sort_keys=True) for text in texts}) != 1)
except ValueError:
    sys.exit(1)
COMPARE
}

# All that an undisturbed migration of the sample writes and moves, and nothing else.
check_migrated() {
  local what from to
  while read -r what from _ to; do
    case $what in
      written) same_document "$expected/${from##*/}" "$report$from" || echo "${from##*/} is not as expected" ;;
      moved)
        [ ! -e "$report$from" ] || echo "$from was not archived"
        [ -e "$report$to" ] || echo "$to is not there"
        ;;
      removed) [ ! -e "$report$from" ] || echo "$from was not removed" ;;
    esac
  done <"$expected/paths"
  for what in "$wifi"/*.json "$wifi"/network.json.*; do
    [ ! -e "$what" ] || grep -qE "/${what##*/}\$" "$expected/paths" || echo "there is ${what##*/}"
  done
}

# Every legacy file is in its place or archived, to the byte, but those that a migration removes.
check_nothing_lost() {
  local path
  while IFS= read -r path; do
    [ "$word" = migrated ] && grep -qxF "removed /$path" "$expected/paths" && continue
    cmp -s -- "devices/$sample/$path" "$report/$path" ||
      cmp -s -- "devices/$sample/$path" "$wifi/legacy/${path##*/}" || echo "lost: /$path"
  done < <(cd -- "devices/$sample" && find usr etc -type f \( -path '*/etc/wifi/*' ! -name '*.json*' -o -path '*/mac_filter/*' \
    -o -name model.json -o -name country.json \))
}

# The machine was as the case wants it.
check_conditions() {
  local condition
  for condition in ${conditions//,/ }; do
    case $condition in
      clock=* | no-log | read-only | environment-on-mmc)
        grep -qxF "$condition" "$report/run/test-boot/met" || echo "the machine was not made so: $condition"
        ;;
    esac
  done
}

# Nothing half written with the household's secrets, and after the end no record but the result.
check_nothing_left() {
  local path
  for path in "$wifi"/*.new; do [ ! -e "$path" ] || echo "left: ${path##*/}"; done
  case $word in
    migrated | failed | gave-up | documents-there | nothing-to-do)
      for path in "$state"/*; do
        case ${path##*/} in
          result | boot.*) ;;
          *) echo "left: migration/${path##*/}" ;;
        esac
      done
      ;;
  esac
}
