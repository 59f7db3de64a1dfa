SUMMARY = "Cellular modem daemon for small routers"
DESCRIPTION = "Owns the AT command port of one cellular modem: keeps it configured and watched, \
               publishes what it learns as small files, keeps the LTE data call on wwan0 up, sets \
               the clock, and exchanges text messages through spool directories."
SECTION = "net"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=c83016e142f51c43d79a5b8bbf36a77b"

# A release brings this layer with the archive in files/: nothing is downloaded.
SRC_URI = "file://${BP}.tar.gz"

inherit cmake systemd update-rc.d

SYSTEMD_SERVICE:${PN} = "modemd.service"
INITSCRIPT_NAME = "modemd"

EXTRA_OECMAKE = "-DMODEMD_PACKAGE=ON \
                 -DMODEMD_SIMULATOR=OFF \
                 -DMODEMD_TESTS=OFF \
                "

do_install:append() {
    install -d ${D}${bindir} ${D}${sysconfdir}/default ${D}${sysconfdir}/init.d
    install -m 0755 ${B}/modemctl ${D}${bindir}/
    install -m 0644 ${S}/packaging/default/modemd ${D}${sysconfdir}/default/
    install -m 0755 ${S}/packaging/sysv/modemd ${D}${sysconfdir}/init.d/

    install -d ${D}${libexecdir}/modemd/systemd
    install -m 0755 ${S}/packaging/libexec/modemd-* ${D}${libexecdir}/modemd/
    install -m 0755 ${S}/packaging/systemd/bin/ResetPCMCIA ${D}${libexecdir}/modemd/systemd/

    install -d ${D}${systemd_system_unitdir} ${D}${nonarch_base_libdir}/udev/rules.d
    for type in path service timer; do
        install -m 0644 ${S}/packaging/systemd/*.$type ${D}${systemd_system_unitdir}/
    done
    install -m 0644 ${S}/packaging/udev/60-modemd.rules ${D}${nonarch_base_libdir}/udev/rules.d/

    install -d ${D}${nonarch_libdir}/sysusers.d ${D}${nonarch_libdir}/tmpfiles.d
    install -m 0644 ${S}/packaging/systemd/modemd.sysusers ${D}${nonarch_libdir}/sysusers.d/modemd.conf
    install -m 0644 ${S}/packaging/systemd/modemd.tmpfiles ${D}${nonarch_libdir}/tmpfiles.d/modemd.conf
}

PACKAGES =+ "${PN}-tools"

FILES:${PN}-tools = "${bindir}/modemctl"
FILES:${PN} += "${nonarch_libdir}/sysusers.d \
                ${nonarch_libdir}/tmpfiles.d \
                ${systemd_system_unitdir} \
               "
CONFFILES:${PN} = "${sysconfdir}/default/modemd"

# Called through the shell, so that nobody finds them by himself.
RDEPENDS:${PN} = "busybox busybox-udhcpc"
