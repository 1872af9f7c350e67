# Tried (tests/packaging): CMake takes EXTRA_OECMAKE, and do_install puts every file into its place, with D, S, B and the
# folders' variables set as BitBake sets them, with systemd and without. Not tried: BitBake itself, a cross build of it,
# and the names of the recipes in DEPENDS.
#
# The source is the checkout that this layer lies in. A product's own platform library is named by
# KELP_PLATFORM_FOLDER, and added to DEPENDS, from a .bbappend.
SUMMARY = "Carries a router's Wi-Fi configuration over to the current format"
LICENSE = "CLOSED"
DEPENDS = "boost magic-enum jsoncpp libsodium libubootenv"

inherit cmake pkgconfig systemd update-rc.d externalsrc

EXTERNALSRC ?= "${@os.path.realpath(d.getVar('THISDIR') + '/../../../..')}"
EXTERNALSRC_BUILD = "${WORKDIR}/build"

KELP_PLATFORM_FOLDER ?= ""
EXTRA_OECMAKE = "-DKELP_HOST_TOOLS=OFF ${@'-DKELP_PLATFORM=' + d.getVar('KELP_PLATFORM_FOLDER') if d.getVar('KELP_PLATFORM_FOLDER') else ''}"

# Before the Wi-Fi daemon, whose unit names kelp-first-boot.service behind After=.
SYSTEMD_SERVICE:${PN} = "kelp-first-boot.service"
INITSCRIPT_NAME = "kelp-first-boot"
INITSCRIPT_PARAMS = "start 15 S ."

do_install:append() {
    install -D -m 0755 ${S}/packaging/first-boot/kelp-first-boot ${D}${libexecdir}/kelp-first-boot
    install -D -m 0755 ${S}/packaging/first-boot/kelp-migrate-again ${D}${sbindir}/kelp-migrate-again
    install -D -m 0644 ${S}/packaging/first-boot/kelp-first-boot.conf ${D}${sysconfdir}/kelp-first-boot.conf
    if ${@bb.utils.contains('DISTRO_FEATURES', 'systemd', 'true', 'false', d)}; then
        install -D -m 0644 ${S}/packaging/first-boot/kelp-first-boot.service ${D}${systemd_system_unitdir}/kelp-first-boot.service
    else
        install -D -m 0755 ${S}/packaging/first-boot/kelp-first-boot.init ${D}${sysconfdir}/init.d/kelp-first-boot
    fi
}

FILES:${PN} += "${libexecdir}/kelp-first-boot"
CONFFILES:${PN} += "${sysconfdir}/kelp-first-boot.conf"
