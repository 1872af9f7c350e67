################################################################################
#
# kelpwifiupdater
#
# Tried (tests/packaging): make expands it over stubs of Buildroot's variables, CMake takes KELPWIFIUPDATER_CONF_OPTS, and the
# steps for systemd and for SysV put every file into its place. Not tried: Buildroot itself, a cross build by it, and
# the names of the packages that it depends on. The headers of magic_enum have to be among those of the toolchain or be
# named in KELP_MAGIC_ENUM, since they may be no package there.
#
################################################################################

KELPWIFIUPDATER_VERSION = 1.1.0
KELPWIFIUPDATER_SITE = $(realpath $(BR2_EXTERNAL_KELP_PATH)/../..)
KELPWIFIUPDATER_SITE_METHOD = local
KELPWIFIUPDATER_DEPENDENCIES = host-pkgconf boost jsoncpp libsodium libubootenv
KELPWIFIUPDATER_CONF_OPTS = -DKELP_HOST_TOOLS=OFF
ifneq ($(KELP_PLATFORM_FOLDER),)
KELPWIFIUPDATER_CONF_OPTS += -DKELP_PLATFORM=$(KELP_PLATFORM_FOLDER)
endif
ifneq ($(KELP_MAGIC_ENUM),)
KELPWIFIUPDATER_CONF_OPTS += -DCMAKE_CXX_FLAGS="$(TARGET_CXXFLAGS) -I$(KELP_MAGIC_ENUM)"
endif

define KELPWIFIUPDATER_INSTALL_FIRST_BOOT
	$(INSTALL) -D -m 0755 $(@D)/packaging/first-boot/kelp-first-boot $(TARGET_DIR)/usr/libexec/kelp-first-boot
	$(INSTALL) -D -m 0755 $(@D)/packaging/first-boot/kelp-migrate-again $(TARGET_DIR)/usr/sbin/kelp-migrate-again
	$(INSTALL) -D -m 0644 $(@D)/packaging/first-boot/kelp-first-boot.conf $(TARGET_DIR)/etc/kelp-first-boot.conf
endef
KELPWIFIUPDATER_POST_INSTALL_TARGET_HOOKS += KELPWIFIUPDATER_INSTALL_FIRST_BOOT

# Before the Wi-Fi daemon, whose unit names kelp-first-boot.service behind After=, or whose script has a higher number.
define KELPWIFIUPDATER_INSTALL_INIT_SYSTEMD
	$(INSTALL) -D -m 0644 $(@D)/packaging/first-boot/kelp-first-boot.service \
		$(TARGET_DIR)/usr/lib/systemd/system/kelp-first-boot.service
endef
define KELPWIFIUPDATER_INSTALL_INIT_SYSV
	$(INSTALL) -D -m 0755 $(@D)/packaging/first-boot/kelp-first-boot.init $(TARGET_DIR)/etc/init.d/S15kelp-first-boot
endef

$(eval $(cmake-package))
