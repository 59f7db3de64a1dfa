################################################################################
#
# modemd
#
################################################################################

MODEMD_VERSION = 1.45
# A release brings this tree with the archive in dl/: nothing is downloaded.
MODEMD_SITE = file://$(BR2_EXTERNAL_MODEMD_PATH)/dl
MODEMD_LICENSE = MIT
MODEMD_LICENSE_FILES = LICENSE
MODEMD_SUPPORTS_IN_SOURCE_BUILD = NO
MODEMD_CONF_OPTS = \
	-DCMAKE_INSTALL_SYSCONFDIR=/etc \
	-DMODEMD_PACKAGE=ON \
	-DMODEMD_SIMULATOR=OFF \
	-DMODEMD_TESTS=OFF

define MODEMD_BUSYBOX_CONFIG_FIXUPS
	$(call KCONFIG_ENABLE_OPT,CONFIG_HWCLOCK)
	$(call KCONFIG_ENABLE_OPT,CONFIG_IFCONFIG)
	$(call KCONFIG_ENABLE_OPT,CONFIG_PING)
	$(call KCONFIG_ENABLE_OPT,CONFIG_UDHCPC)
endef

ifeq ($(BR2_PACKAGE_MODEMD_TOOLS),y)
define MODEMD_INSTALL_TOOLS
	$(INSTALL) -D -m 0755 $(MODEMD_BUILDDIR)/modemctl \
		$(TARGET_DIR)/usr/bin/modemctl
endef
MODEMD_POST_INSTALL_TARGET_HOOKS += MODEMD_INSTALL_TOOLS
endif

define MODEMD_INSTALL_INIT_SYSV
	DESTDIR=$(TARGET_DIR) $(BR2_CMAKE) --install $(MODEMD_BUILDDIR) \
		--component sysv
	mv $(TARGET_DIR)/etc/init.d/modemd $(TARGET_DIR)/etc/init.d/S50modemd
endef

define MODEMD_INSTALL_INIT_SYSTEMD
	DESTDIR=$(TARGET_DIR) $(BR2_CMAKE) --install $(MODEMD_BUILDDIR) \
		--component systemd
endef

$(eval $(cmake-package))
