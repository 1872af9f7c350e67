# shellcheck shell=sh
# What the scripts of a booted machine share. Sourced, never run.
PATH=/test-boot/bin:/bin:/sbin:/usr/bin:/usr/sbin

# For the command on the host, which reads the console and waits for such lines.
say() { printf '\ntest-boot: %s\n' "$*" >/dev/console; }

# The value of the word test.$1=VALUE of the kernel's command line.
asked() {
  # shellcheck disable=SC2013  # one line of words
  for word in $(cat /proc/cmdline); do
    case $word in
      test."$1"=*) printf '%s\n' "${word#*=}" ;;
    esac
  done
}

# The block device with the serial number $1.
disk() {
  for serial in /sys/block/vd*/serial; do
    [ "$(cat "$serial")" != "$1" ] || printf '/dev/%s\n' "$(basename "${serial%/serial}")"
  done
}

# shellcheck disable=SC2034  # the scripts use it
conditions=$(asked conditions | tr , ' ')
