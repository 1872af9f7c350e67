#!/usr/bin/env bash
# scripts/build with a cmake that only says when it began and ended: two builds in one folder go one after the other, and
# one that fails says what it printed.
set -euo pipefail
build=$(readlink -f -- "$(dirname -- "$0")/../../scripts/build")
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
mkdir "$folder/bin"
cat >"$folder/bin/cmake" <<'CMAKE'
#!/usr/bin/env bash
echo begin >>"$KELP_BUILD_DIR/../events"
[[ " $* " != *" breaks "* ]] || { echo "what broke" && exit 1; }
sleep 0.3
echo end >>"$KELP_BUILD_DIR/../events"
CMAKE
chmod +x "$folder/bin/cmake"
export PATH=$folder/bin:$PATH TMPDIR=$folder KELP_BUILD_DIR=$folder/build

"$build" release >"$folder/first" 2>&1 &
"$build" release >"$folder/second" 2>&1
wait
events=$(paste -sd ' ' "$folder/events")
[[ $events =~ ^(begin\ end\ ?)+$ ]] || {
  echo "the builds overlap: $events"
  exit 1
}
grep -q "another build is under way in $folder/build" "$folder/first" "$folder/second" || {
  echo "none was told to wait"
  exit 1
}
if output=$("$build" release --target breaks 2>&1); then
  echo "a failed build is no failure"
  exit 1
fi
[[ $output == *"what broke"* ]] || {
  echo "what broke is not shown: $output"
  exit 1
}
