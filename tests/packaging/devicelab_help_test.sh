#!/usr/bin/env bash
# Usage: devicelab_help_test.sh CHECKOUT DEVICELAB
#
# The man page and the completion have the commands and options that devicelab itself names.
set -euo pipefail
checkout=$1 devicelab=$2
failed=0
complain() {
  echo "$1"
  failed=1
}

page=$("$checkout/packaging/man/devicelab-man" "$devicelab" "$checkout/docs/devicelab.1.in")
commands=$("$devicelab" --help | sed '1,/^Subcommands:/d' | sed -nE 's/^  ([a-z]+) .*/\1/p')
[[ $commands == *run* && $commands == *show* ]] || complain "no commands found: $commands"
for command in $commands; do
  grep -qx "\.SS $command" <<<"$page" || complain "the man page lacks the command $command"
done
grep -qE '^\.B \\-\\-keep TEXT' <<<"$page" || complain "the man page lacks run's option --keep"
! grep -q '@COMMANDS@' <<<"$page" || complain "the man page has its mark left"
! grep -qF -- "$devicelab" <<<"$page" || complain "the man page tells where it was made"

# shellcheck source=packaging/completion/devicelab
. "$checkout/packaging/completion/devicelab"
completes() {
  local wanted=$1
  shift
  COMP_WORDS=("$devicelab" "$@") COMP_CWORD=$# COMPREPLY=()
  _devicelab 2>/dev/null || :
  [[ " ${COMPREPLY[*]} " == *" $wanted "* ]] || complain "$* is completed with: ${COMPREPLY[*]}"
}
completes run ru
completes --version --v
completes --keep run --k
completes "$checkout/devices" run "$checkout/devic"
exit $failed
