#!/usr/bin/env bash
# Usage: parallel_test.sh DEVICELAB DOCUMENT
#
# Runs the command of DOCUMENT (docs/fleet.md) that spreads a fleet over machines: two sshd servers of this test's own
# on loopback ports stand for them. One of them dies in the middle; the same command with the other one goes on, and
# every device has one record in the end. All that it makes is in a temporary folder, which goes away.
set -euo pipefail
if [ "$(id -u)" = 0 ] && ! unshare --mount true 2>/dev/null; then
  echo "takes mounts, which this container does not let a process make"
  exit 77
fi
devicelab=$1 document=$2

folder=$(mktemp -d)
servers=()

# A process and all that it started, down to the last.
kill_tree() {
  local child
  for child in $(pgrep -P "$1"); do kill_tree "$child"; done
  kill -KILL "$1" 2>/dev/null || true
}

clean_up() {
  local server
  for server in "${servers[@]}"; do kill_tree "$server"; done
  wait 2>/dev/null || true
  rm -rf -- "$folder"
}
trap clean_up EXIT

fail() {
  printf 'parallel_test: %s\n' "$*" >&2
  tail -n 20 "$folder"/*.log >&2 || true
  exit 1
}

free_port() {
  local port
  for port in $(shuf -i 20000-60000 -n 50); do
    if ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
      echo "$port"
      return
    fi
  done
  fail "no free port"
}

cd -- "$folder"
chmod 700 .
ssh-keygen -q -t ed25519 -N '' -f key
cp key.pub authorized
cat >ssh_config <<END
Host *
  HostName 127.0.0.1
  User $(id -un)
  IdentityFile $folder/key
  IdentitiesOnly yes
  BatchMode yes
  StrictHostKeyChecking no
  UserKnownHostsFile /dev/null
  GlobalKnownHostsFile /dev/null
  LogLevel ERROR
END

start_server() {
  local name=$1 port
  port=$(free_port)
  ssh-keygen -q -t ed25519 -N '' -f "host_$name"
  cat >"sshd_$name" <<END
ListenAddress 127.0.0.1
Port $port
HostKey $folder/host_$name
AuthorizedKeysFile $folder/authorized
PidFile none
StrictModes no
UsePAM no
PermitRootLogin yes
PasswordAuthentication no
KbdInteractiveAuthentication no
END
  printf 'Host %s\n  Port %s\n' "$name" "$port" | cat - ssh_config >>ssh_all
  if [ "$(id -u)" = 0 ]; then
    # Root's server wants a folder of its own in /run, and gets it where nobody else sees it.
    # shellcheck disable=SC2016  # the inner shell expands it
    unshare --mount sh -c 'mount -t tmpfs none /run && mkdir -m 755 /run/sshd && exec "$0" "$@"' \
      "$(command -v sshd || echo /usr/sbin/sshd)" -D -e -f "$folder/sshd_$name" 2>"sshd_$name.log" &
  else
    "$(command -v sshd || echo /usr/sbin/sshd)" -D -e -f "$folder/sshd_$name" 2>"sshd_$name.log" &
  fi
  servers+=($!)
  for _ in $(seq 100); do
    ! ssh -F ssh_all "$name" true 2>/dev/null || return 0
    sleep 0.1
  done
  fail "the server $name does not answer"
}

"$devicelab" new devices --count 60 --seed 5 --plain >/dev/null
mkdir bin records
ln -s "$devicelab" bin/devicelab
start_server lab1
start_server lab2

# The document's own words, for the machines, the list and the folders of this test.
command=$(sed -n '/^    split /,/^$/p' "$document")
[[ $command == *parallel* ]] || fail "the document has no command"
export PATH=$folder/bin:$PATH PARALLEL_HOME=$folder/parallel PARALLEL_SSH="ssh -F $folder/ssh_all"
mkdir parallel
touch parallel/will-cite
# The machines have the same search path.
command=${command//devicelab fleet/PATH=$folder/bin:\$PATH devicelab fleet}

run() { bash -c "${command//lab1,lab2/$1}" >parallel.log 2>&1; }

run lab1,lab2 &
running=$!
for _ in $(seq 300); do
  [ "$(cat records/* 2>/dev/null | wc -l)" -lt 10 ] || break
  sleep 0.02
done
kill_tree "${servers[0]}"
wait "${servers[0]}" 2>/dev/null || true
status=0
wait "$running" || status=$?
[ "$status" != 0 ] || fail "a dead machine went unnoticed"
[ "$(cat records/* | wc -l)" -lt 60 ] || fail "the machine died too late"

run lab2 || fail "the second run failed"
images=$(cat records/* | grep -o '"image":"[^"]*"' | sort)
[ "$(wc -l <<<"$images")" = 60 ] || fail "$(wc -l <<<"$images") records of 60 devices"
[ "$(uniq <<<"$images" | wc -l)" = 60 ] || fail "a device has two records"
"$devicelab" summary records/* | grep -q '^60 devices' || fail "the summary counts otherwise"
