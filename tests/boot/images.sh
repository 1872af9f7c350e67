# shellcheck shell=bash disable=SC2154  # tests/boot/run sets the variables
# What the machines of scripts/test-boot boot from, made of the Debian root $distribution in the folder $work. Sourced, never run.

busybox=$distribution/usr/bin/busybox
kernel_version=$(find "$distribution/usr/lib/modules" -mindepth 1 -maxdepth 1 -printf '%f\n' | sort -V | tail -n 1)
flash_at=$((128 << 20)) flash_bytes=$((32 << 20)) erase_bytes=$((128 << 10))

# All of busybox's commands in the folder $1.
add_busybox() {
  local command
  mkdir -p -- "$1"
  cp -- "$busybox" "$1/"
  for command in $("$busybox" --list); do
    [ "$command" = busybox ] || ln -s busybox "$1/$command"
  done
}

# The modules of ours, built against the headers of the root's kernel.
make_modules() {
  mkdir -- "$work/module"
  cp -- tests/boot/*.c "$work/module/"
  printf 'obj-m := kelp_mac_addresses.o flash_write_buffer.o\n' >"$work/module/Kbuild"
  mount --bind "$work/module" "$distribution/mnt"
  chroot "$distribution" make -C "/lib/modules/$kernel_version/build" M=/mnt modules >"$work/module.log" 2>&1 || {
    tail -n 15 -- "$work/module.log" >&2
    fail "cannot build the modules"
  }
  umount "$distribution/mnt"
}

# What the kernel lacks to find its root, and the init that mounts it.
make_initrd() {
  local tree=$work/initrd place number=10
  make_modules
  add_busybox "$tree/bin"
  mkdir -p -- "$tree"/{proc,sys,dev,test-boot/modules}
  for place in virtio_pci virtio_blk crc32c_generic ext4 phram jffs2 lzo deflate zstd ubi ubifs sdhci_pci mmc_block; do
    chroot "$distribution" modprobe --set-version "$kernel_version" --show-depends "$place"
  done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }' >"$work/modules"
  while read -r place; do
    cp -- "$distribution$place" "$tree/test-boot/modules/$number-${place##*/}"
    number=$((number + 1))
  done <"$work/modules"
  cp -- "$work/module/"*.ko tests/boot/guest/conditions.sh "$tree/test-boot/"
  cp -- tests/boot/guest/init "$tree/init"
  (cd -- "$tree" && find . | "$busybox" cpio -o -H newc 2>/dev/null) >"$work/initrd.cpio"
}

# What both roots have: the program with the libraries that the tree $1 lacks, the script, and what reports.
add_ours() {
  local library
  mkdir -p -- "$1/usr/sbin" "$1/usr/libexec" "$1/test-boot" "$1/var/lock"
  cp -- "$program" "$1/usr/sbin/"
  ldd "$program" | grep -o '/[^ ]*' | while read -r library; do
    [ -e "$1$library" ] || cp -L --parents -- "$library" "$1/"
  done
  cp -- packaging/first-boot/kelp-first-boot "$1/usr/libexec/"
  add_busybox "$1/test-boot/bin"
  cp -- tests/boot/guest/{conditions.sh,before,end} "$1/test-boot/"
}

make_busybox_tree() {
  local tree=$work/busybox
  mkdir -p -- "$tree"/{etc/init.d,proc,sys,dev,run,tmp,root,sbin}
  add_ours "$tree"
  ln -s test-boot/bin "$tree/bin"
  ln -s ../bin/busybox "$tree/sbin/init"
  printf '::sysinit:/etc/init.d/rcS\n' >"$tree/etc/inittab"
  cp -- tests/boot/guest/rcS "$tree/etc/init.d/"
  ln -s /test-boot/before "$tree/etc/init.d/S17before"
  cp -- packaging/first-boot/kelp-first-boot.init "$tree/etc/init.d/S18kelp-first-boot"
  chmod 755 "$tree/etc/init.d/S18kelp-first-boot"
  ln -s /test-boot/end "$tree/etc/init.d/S99end"
}

make_systemd_tree() {
  local tree=$work/systemd unit units
  mkdir -- "$tree"
  tar -C "$distribution" --one-file-system --exclude=./boot --exclude=./usr/{src,include} --exclude=./usr/lib/{gcc,modules} \
    --exclude=./usr/share/{doc,locale,man,perl} --exclude=./usr/bin/'*-linux-gnu-*' --exclude=./usr/libexec/gcc \
    --exclude=./usr/lib/gcc-cross --exclude=./var/{cache,lib/apt} --exclude=./{dev,proc,sys,tmp} -cf - . | tar -C "$tree" -xf -
  mkdir -p -- "$tree"/{boot,dev,proc,sys,tmp}
  add_ours "$tree"
  units=$tree/etc/systemd/system
  mkdir -p -- "$units/multi-user.target.wants"
  for unit in packaging/first-boot/kelp-first-boot.service tests/boot/guest/*.service; do
    cp -- "$unit" "$units/"
    ln -s "../${unit##*/}" "$units/multi-user.target.wants/"
  done
  # Nothing that is tested here needs them, and an emulated machine takes a minute for them.
  for unit in systemd-udevd.service systemd-udev-trigger.service systemd-hwdb-update.service e2scrub_reap.service \
    systemd-udevd-kernel.socket systemd-udevd-control.socket apt-daily.timer apt-daily-upgrade.timer; do
    ln -s /dev/null "$units/$unit"
  done
}

old_build() { case $1 in release-13-*) echo 9000 ;; *) echo 8000 ;; esac; }

# Lays sample $3 out on the tree of init $1, as a disk or as a flash of file system $2 in the folder $4.
make_root() {
  local init=$1 storage=$2 sample=$3 machine=$4 tree=$4/tree
  cp -a -- "$work/$init" "$tree"
  tar -C "devices/$sample" --exclude=./proc --owner=0 --group=0 -cf - . | tar -C "$tree" -xf -
  old_build "$sample" >"$tree/usr/kelp/etc/old_build"
  cat "devices/$sample"/proc/sys/kernel/kelp_mac_address? | paste -sd , >"$tree/test-boot/mac_addresses"
  cp -- "devices/$sample/boot/uboot.env" "$machine/card"
  truncate -s 64M "$machine/card"
  case $init-$storage in
    busybox-ext4) mke2fs -q -t ext4 -m 0 -b 1024 -N 1024 -d "$tree" "$machine/disk" 32M ;;
    systemd-ext4) mke2fs -q -t ext4 -m 0 -b 4096 -d "$tree" "$machine/disk" 600M ;;
    *) make_flash ;;
  esac >"$machine/mkfs.log" 2>&1 || {
    cat -- "$machine/mkfs.log" >&2
    fail "cannot make a root on $storage"
  }
  rm -rf -- "$tree"
}

# A flash is a stretch of the machine's memory, which is a file here: so what was written to it survives the machine.
make_flash() {
  local image=$machine/image
  if [ "$storage" = jffs2 ]; then
    mkfs.jffs2 -r "$tree" -e $erase_bytes -p -o "$image"
  else
    mkfs.ubifs -r "$tree" -m 8 -e $((erase_bytes - 128)) -c $((flash_bytes / erase_bytes)) -o "$image.ubifs"
    printf '%s\n' '[root]' mode=ubi "image=$image.ubifs" vol_id=0 vol_type=dynamic vol_name=root vol_flags=autoresize \
      >"$machine/volumes"
    ubinize -m 1 -p $erase_bytes -o "$image" "$machine/volumes"
  fi && truncate -s 256M "$machine/memory" &&
    head -c $flash_bytes /dev/zero | tr '\0' '\377' |
    dd of="$machine/memory" bs=1M seek=$((flash_at >> 20)) conv=notrunc status=none &&
    dd if="$image" of="$machine/memory" bs=1M seek=$((flash_at >> 20)) conv=notrunc status=none
}
