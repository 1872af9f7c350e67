# shellcheck shell=bash disable=SC2054,SC2154  # qemu's options have commas; tests/boot/run sets the variables
# One boot of a machine. Sourced, never run.

# The longest that a boot may take, in seconds, most of it the machine's own where it is emulated.
bound=400

# Boots what make_root put into the folder $1, of init $2 and file system $3, under the conditions $4. Leaves "console",
# and "report" where the boot came to its end. False with the reason in "trouble" when something hung or did not happen.
boot() {
  local machine=$1 init=$2 storage=$3 conditions=$4 words options=() give_up=$((SECONDS + bound)) pid
  trouble=''
  rm -rf -- "$machine"/{console,report,report.disk,monitor.*,go.*}
  truncate -s 8M "$machine/report.disk"
  mkfifo "$machine/monitor.in" "$machine/go.in"
  ln -s /dev/null "$machine/monitor.out"
  ln -s /dev/null "$machine/go.out"
  words="console=ttyS0 loglevel=4 nokaslr panic=-1 test.storage=$storage test.conditions=$conditions"
  if [ "$storage" = ext4 ]; then
    options=(-m 256 -drive "file=$machine/disk,format=raw,if=none,id=root,cache=unsafe"
      -device virtio-blk-pci,drive=root,serial=root)
  else
    options=(-m 256 -object "memory-backend-file,id=memory,size=256M,mem-path=$machine/memory,share=on"
      -machine memory-backend=memory)
    words+=" memmap=$((flash_bytes >> 20))M\$$((flash_at >> 20))M test.flash=$flash_at,$flash_bytes,$erase_bytes"
  fi
  [ "$init" = busybox ] || words+=" systemd.getty_auto=no systemd.journald.forward_to_console=1 systemd.show_status=no"
  case ,$conditions, in
    *,clock=*) options+=(-rtc "base=$(sed -E 's/.*clock=([0-9]+).*/\1/' <<<"$conditions")-07-01T12:00:00") ;;
    *,no-log,*) [ "$init" = busybox ] || words+=" systemd.mask=systemd-journald-dev-log.socket" ;;
    *,environment-on-mmc,*)
      options+=(-device sdhci-pci -device sd-card,drive=card -drive "file=$machine/card,format=raw,if=none,id=card")
      ;;
  esac
  # Open from this side for as long as the machine runs, so that neither end waits for the other.
  exec 6<>"$machine/monitor.in" 7<>"$machine/go.in"
  setpriv --pdeathsig KILL qemu-system-x86_64 -nodefaults -no-user-config -no-reboot -display none -cpu max \
    -machine "pc,accel=$accelerator" "${options[@]}" \
    -drive "file=$machine/report.disk,format=raw,if=none,id=report,cache=unsafe" \
    -device virtio-blk-pci,drive=report,serial=report \
    -serial "file:$machine/console" \
    -chardev "pipe,id=go,path=$machine/go" -serial chardev:go \
    -chardev "pipe,id=monitor,path=$machine/monitor" -mon chardev=monitor \
    -kernel "$distribution/boot/vmlinuz-$kernel_version" -initrd "$work/initrd.cpio" -append "$words" \
    >"$machine/qemu.log" 2>&1 </dev/null &
  pid=$!
  follow || kill -KILL "$pid" 2>/dev/null || :
  wait "$pid" 2>/dev/null || :
  exec 6>&- 7>&-
  [ -z "$trouble" ]
}

# Waits until the console says $1, or ends where that is empty; false, with the reason, when it will not.
await() {
  while [ $SECONDS -lt "$give_up" ]; do
    if [ -n "$1" ] && grep -qsF "test-boot: $1" "$machine/console"; then return 0; fi
    kill -0 "$pid" 2>/dev/null || {
      [ -n "$1" ] || return 0
      trouble="the machine ended before it said \"$1\": $(tail -qn 2 -- "$machine/console" "$machine/qemu.log")"
      return 1
    }
    sleep 0.05
  done
  trouble="hung: after $bound seconds the machine has not $([ -z "$1" ] && echo ended || echo "said \"$1\"")"
  return 1
}

storage_takes() { printf 'block_set_io_throttle root 0 0 %s 0 0 0\n' "$1" >&6; }

# What happens to the machine while it boots. False when it has to be killed.
follow() {
  case ,$conditions, in
    *,cut=*)
      await cut || return
      kill -KILL "$pid" 2>/dev/null || :
      return
      ;;
    *,hang,*)
      await hang || return
      storage_takes 1  # a byte a second
      echo >&7
      await "goes on" || return
      storage_takes 0  # whatever it can
      echo >&7
      ;;
  esac
  await '' || return
  mkdir -- "$machine/report"
  tar -C "$machine/report" -xf "$machine/report.disk" 2>/dev/null && [ -e "$machine/report/run/test-boot/seconds" ] ||
    trouble="the boot did not come to its end: $(tail -qn 2 -- "$machine/console" "$machine/qemu.log")"
}
