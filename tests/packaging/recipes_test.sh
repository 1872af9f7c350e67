#!/usr/bin/env bash
# Usage: recipes_test.sh CHECKOUT PROGRAM
#
# What can be tried of the recipes without their build systems: the makefiles over stubs of those systems' variables, the
# BitBake recipe's steps as a shell runs them. Each has to put the same files where its world looks for them.
set -euo pipefail
checkout=$1 program=$2
packaging=$checkout/packaging
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
umask 022
failed=0

# expect NAME FOLDER: the files, with their modes, are those that standard input lists.
expect() {
  diff -u - <(cd -- "$2" && find . -type f -printf '%P %m\n' | sort) || {
    echo "$1 puts other files into its place than those with a minus"
    failed=1
  }
}

# same NAME FILE SOURCE
same() {
  cmp -- "$2" "$3" || {
    echo "$1 installs another file"
    failed=1
  }
}

# OpenWrt: rules.mk, package.mk and cmake.mk give commands and folders, and BuildPackage makes the rules.
mkdir -p "$folder/openwrt/include" "$folder/openwrt/installed/usr/sbin"
cp -- "$program" "$folder/openwrt/installed/usr/sbin/kelpwifiupdater"
cat >"$folder/openwrt/rules.mk" <<'END'
INCLUDE_DIR=$(TOPDIR)/include
PKG_BUILD_DIR=$(TOPDIR)/build
PKG_INSTALL_DIR=$(TOPDIR)/installed
CP=cp -fpR
INSTALL_DIR=install -d -m0755
INSTALL_BIN=install -m0755
INSTALL_CONF=install -m0600
END
: >"$folder/openwrt/include/cmake.mk"
cat >"$folder/openwrt/include/package.mk" <<'END'
define BuildPackage
prepare:
	$$(Build/Prepare)
install:
	$$(call Package/$(1)/install,$$(TOPDIR)/root)
options:
	@echo $$(CMAKE_OPTIONS)
name:
	@echo $(1) $$(PKG_VERSION)
endef
END
openwrt() { make --no-print-directory -s -C "$packaging/openwrt/kelpwifiupdater" TOPDIR="$folder/openwrt" "$@"; }
openwrt prepare
openwrt install
expect OpenWrt "$folder/openwrt/root" <<'END'
etc/init.d/kelp-first-boot 755
etc/kelp-first-boot.conf 600
usr/libexec/kelp-first-boot 755
usr/sbin/kelp-migrate-again 755
usr/sbin/kelpwifiupdater 755
END
same OpenWrt "$folder/openwrt/root/etc/init.d/kelp-first-boot" "$packaging/first-boot/kelp-first-boot.procd"

# Buildroot: a package's hooks run as part of rules whose target lies in its build folder.
mkdir -p "$folder/buildroot"
cp -R -- "$packaging" "$folder/buildroot/"
cat >"$folder/buildroot/Makefile" <<'END'
INSTALL = install
cmake-package =
include $(BR2_EXTERNAL_KELP_PATH)/external.mk
define newline


endef
$(BUILD)/systemd $(BUILD)/sysv:
	$(foreach hook,$(KELPWIFIUPDATER_POST_INSTALL_TARGET_HOOKS),$($(hook))$(newline))
	$(if $(filter %/systemd,$@),$(KELPWIFIUPDATER_INSTALL_INIT_SYSTEMD),$(KELPWIFIUPDATER_INSTALL_INIT_SYSV))
options:
	@echo $(KELPWIFIUPDATER_CONF_OPTS)
source:
	@echo $(KELPWIFIUPDATER_SITE)
name:
	@echo kelpwifiupdater $(KELPWIFIUPDATER_VERSION)
END
buildroot() {
  make --no-print-directory -s -f "$folder/buildroot/Makefile" BR2_EXTERNAL_KELP_PATH="$packaging/buildroot" \
    BUILD="$folder/buildroot" "$@"
}
for init in systemd sysv; do buildroot TARGET_DIR="$folder/buildroot/root-$init" "$folder/buildroot/$init"; done
expect "Buildroot with systemd" "$folder/buildroot/root-systemd" <<'END'
etc/kelp-first-boot.conf 644
usr/lib/systemd/system/kelp-first-boot.service 644
usr/libexec/kelp-first-boot 755
usr/sbin/kelp-migrate-again 755
END
expect "Buildroot with SysV" "$folder/buildroot/root-sysv" <<'END'
etc/init.d/S15kelp-first-boot 755
etc/kelp-first-boot.conf 644
usr/libexec/kelp-first-boot 755
usr/sbin/kelp-migrate-again 755
END
same Buildroot "$folder/buildroot/root-sysv/etc/init.d/S15kelp-first-boot" "$packaging/first-boot/kelp-first-boot.init"
[ "$(buildroot source)" = "$(realpath -- "$checkout")" ] || {
  echo "Buildroot takes its source from $(buildroot source)"
  failed=1
}

# Yocto: CMake's steps, then the recipe's own text behind them, as BitBake runs it in a shell.
recipe=("$packaging"/yocto/recipes-kelp/kelpwifiupdater/kelpwifiupdater_*.bb)
version=${recipe[0]##*_}
version=${version%.bb}
mkdir -p "$folder/yocto"
options=$(sed -n 's/^EXTRA_OECMAKE = "\(.*\)"$/\1/p' "${recipe[0]}" | sed 's/\${@[^}]*}//g; s/ *$//')
# shellcheck disable=SC2086  # one word each
cmake -S "$checkout" -B "$folder/yocto/build" -DCMAKE_INSTALL_PREFIX=/usr $options >"$folder/yocto/log" 2>&1 || {
  cat -- "$folder/yocto/log"
  exit 1
}
cp -- "$program" "$folder/yocto/build/kelpwifiupdater"  # as do_compile leaves it
for init in systemd sysv; do
  [ $init = systemd ] && with_systemd=true || with_systemd=false
  {
    # shellcheck disable=SC2016  # the shell below expands it
    echo 'DESTDIR=$D cmake --install $B >/dev/null'
    awk '/^do_install:append\(\) \{/ { on = 1; next } /^}/ { on = 0 } on' "${recipe[0]}" |
      sed "s/\${@bb\.utils\.contains([^)]*)}/$with_systemd/"
  } >"$folder/yocto/do_install"
  S=$checkout B=$folder/yocto/build D=$folder/yocto/root-$init libexecdir=/usr/libexec sbindir=/usr/sbin sysconfdir=/etc \
    systemd_system_unitdir=/usr/lib/systemd/system sh -eu "$folder/yocto/do_install"
done
expect "Yocto with systemd" "$folder/yocto/root-systemd" <<'END'
etc/kelp-first-boot.conf 644
usr/lib/systemd/system/kelp-first-boot.service 644
usr/libexec/kelp-first-boot 755
usr/sbin/kelp-migrate-again 755
usr/sbin/kelpwifiupdater 755
usr/share/man/man8/kelpwifiupdater.8 644
END
expect "Yocto with SysV" "$folder/yocto/root-sysv" <<'END'
etc/init.d/kelp-first-boot 755
etc/kelp-first-boot.conf 644
usr/libexec/kelp-first-boot 755
usr/sbin/kelp-migrate-again 755
usr/sbin/kelpwifiupdater 755
usr/share/man/man8/kelpwifiupdater.8 644
END

# One version and the same options everywhere.
wanted=$(sed -n 's/^project(\(kelpwifiupdater\) VERSION \([0-9.]*\).*/\1 \2/p' "$checkout/CMakeLists.txt")
debian=$(sed -nE '1s/^([^ ]*) \((.*)\).*/\1 \2/p' "$packaging/debian/changelog")
changes="kelpwifiupdater $(sed -n 's/^## //p' "$checkout/CHANGELOG.md" | head -n 1)"
for named in "$(openwrt name)" "$(buildroot name)" "kelpwifiupdater $version" "$debian" "$changes"; do
  [ "$named" = "$wanted" ] || {
    echo "a recipe or a list of changes is about $named, not $wanted"
    failed=1
  }
done
for given in "$(openwrt options)" "$(buildroot options)"; do
  [ "$given" = "$options" ] || {
    echo "CMake is given $given, not $options"
    failed=1
  }
done
for given in "$(openwrt KELP_PLATFORM_FOLDER=/maker options)" "$(buildroot KELP_PLATFORM_FOLDER=/maker options)"; do
  [ "$given" = "$options -DKELP_PLATFORM=/maker" ] || {
    echo "with a maker's platform CMake is given $given"
    failed=1
  }
done
exit $failed
