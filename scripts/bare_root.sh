# shellcheck shell=bash
# What the commands that make bare roots of a release share. Sourced after common.sh, never run.

# The archive that apt already has distribution $1 from. Its own is told from those of other makers and of updates
# by origin and label.
archive() {
  # shellcheck disable=SC2016  # apt fills this in
  apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Origin: $1" "Label: $1" \
    'Component: main' | sed '/^cdrom:/d' | sort -u | head -n 1
}

# Makes a bare root of release $1 for architecture $2 in the folder $3, all of it or nothing: from archive $4 with signatures
# held against keyring $5, where they are empty from the archive that apt knows and with the distribution's. Further
# arguments are debootstrap's.
make_bare_root() {
  local release=$1 arch=$2 place=$3 mirror=$4 keyring=$5 script distribution components package new=$3.new
  shift 5
  # What debootstrap does not know is a release younger than itself. Debian's next ones it does know; all of Ubuntu are
  # made alike.
  script=/usr/share/debootstrap/scripts/$release
  [ -e "$script" ] || script=/usr/share/debootstrap/scripts/jammy
  if grep -q ubuntu-archive-keyring "$script"; then
    distribution=Ubuntu components=main,universe package=ubuntu-archive-keyring
  else
    distribution=Debian components=main package=debian-archive-keyring
  fi
  [ -n "$keyring" ] || keyring=/usr/share/keyrings/$package.gpg
  [ -n "$mirror" ] || mirror=$(archive "$distribution")
  [ -n "$mirror" ] || fail "apt has no source of $distribution on this machine: name an archive with --mirror"
  [ -e "$keyring" ] || fail "there is no $keyring: install the package $package, or name the file with --keyring"
  rm -rf -- "$new" "$place"
  say "making a bare root of $release ($arch) from $mirror"
  debootstrap --variant=minbase --arch="$arch" --components=$components --force-check-gpg --keyring="$keyring" "$@" \
    "$release" "$new" "$mirror" "$script" >"$place.log" 2>&1 || {
    tail -n 15 -- "$place.log" >&2
    fail "debootstrap could not make it"
  }
  # How this machine's apt gets out is how the root's does.
  apt-config dump | grep -iE '^Acquire::(http|https)::' >"$new/etc/apt/apt.conf.d/90machine" || true
  mv -- "$new" "$place"
}
