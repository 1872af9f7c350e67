# shellcheck shell=bash
# What the commands that call apt share. Sourced behind common.sh, never run. "work" is the caller's temporary folder.

# apt-get, silent unless it fails. On a machine that has just come up its own daily run often holds the
# locks; apt waits for the one of dpkg only, and not for that of the package lists.
apt_quietly() {
  local give_up=$((SECONDS + 300)) told=0
  # shellcheck disable=SC2154  # the caller sets "work"
  until apt-get -qq -o DPkg::Lock::Timeout=10 -o Acquire::Retries=2 "$@" >"$work/log" 2>&1 </dev/null; do
    if ! grep -qE 'Could not get lock|Unable to (lock|acquire)' "$work/log" || [ $SECONDS -ge $give_up ]; then
      tail -n 15 -- "$work/log" >&2
      return 1
    fi
    [ $told = 1 ] || say "another program is using apt; waiting up to five minutes for it"
    told=1
    sleep 2
  done
}

# Prints entry number $2 of the source file $1 with release $3 in place of the one it names, for any machine. Address, keys and
# options stay as they are; of the components only "main" is wanted.
source_entry_for() {
  local file=$1 number=$2 release=$3
  case $file in
    *.sources)
      # Entries are paragraphs, and one of nothing but comments is not counted. The lines that continue a
      # field begin with white space.
      awk -v wanted="$number" -v release="$release" '
        BEGIN { RS = ""; FS = "\n" }
        /(^|\n)[^#]/ && ++count == wanted {
          for (i = 1; i <= NF; i++) {
            if ($i ~ /^#/) continue
            if ($i !~ /^[ \t]/) {
              field = tolower(substr($i, 1, index($i, ":") - 1))
              kept = field !~ /^(types|suites|components|enabled|architectures)$/
            }
            if (kept) print $i
          }
          print "Types: deb\nSuites: " release "\nComponents: main"
        }' "$file"
      ;;
    *)
      sed -nE "${number}s/^[[:space:]]*(deb([[:space:]]+\[[^]]*\])?[[:space:]]+[^[:space:]]+[[:space:]]).*/\1$release main/p" \
        "$file"
      ;;
  esac
}

# Prints the paths of source files for release $1, each the twin of an entry by which this machine gets its own release
# from the distribution's archive.
sources_for() {
  local own entry address file source count=0
  # shellcheck disable=SC1091
  own=$(. /etc/os-release && echo "${DEBIAN_CODENAME:-${VERSION_CODENAME:-}}")
  # apt itself knows its sources, in whichever form they are written, and from their signed indexes also
  # whose they are: the distribution's own archive carries its name as origin and as label, whereas those of
  # other makers, security updates and backports carry others. An image on a disc and an archive of past
  # states (with a time in its address) do not have the next release.
  # shellcheck disable=SC2016  # apt fills these in
  while IFS='|' read -r entry address; do
    [[ ! $address =~ ^cdrom:|/[0-9]{8}T[0-9]{6}Z/ ]] || continue
    file=${entry%:*}
    count=$((count + 1))
    # The ending tells apt which of the two forms it is.
    source=$work/$1-$count.${file##*.}
    source_entry_for "$file" "${entry##*:}" "$1" >"$source"
    [ ! -s "$source" ] || printf '%s\n' "$source"
  done < <(apt-get indextargets --format '$(SOURCESENTRY)|$(REPO_URI)' 'Created-By: Packages' \
    'Origin: Debian' 'Label: Debian' "Codename: $own" 'Component: main' | sort -u)
}
