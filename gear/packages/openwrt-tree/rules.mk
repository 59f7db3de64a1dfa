# What the package's Makefile may expect of the system's own rules, as far as it uses them. The
# caller sets OUT, where all is built, and TRIPLE and TOOLCHAIN, the compiler for musl.
INCLUDE_DIR := $(TOPDIR)/include
PKG_BUILD_DIR = $(OUT)/build/$(PKG_NAME)-$(PKG_VERSION)
PKG_INSTALL_DIR = $(PKG_BUILD_DIR)/ipkg-install

TARGET_CXX := $(TOOLCHAIN)/$(TRIPLE)-c++
TARGET_CXXFLAGS := -Os -pipe
INSTALL_DIR := install -d -m0755
INSTALL_BIN := install -m0755
INSTALL_CONF := install -m0600
INSTALL_DATA := install -m0644
