# BuildPackage as the system has it: a package without a needed field stops the build, the archive
# must have its digest, and each package's files are put together in a root of their own.
required = $(if $(strip $($(1))),,$(error $(2): $(1) is empty))

define Download
	echo "$(PKG_HASH)  $(patsubst file://%,%,$(PKG_SOURCE_URL))/$(PKG_SOURCE)" | sha256sum --check
endef

$(PKG_BUILD_DIR)/.prepared:
	rm -rf $(PKG_BUILD_DIR)
	mkdir -p $(PKG_BUILD_DIR)
	$(Download)
	tar -xzf $(patsubst file://%,%,$(PKG_SOURCE_URL))/$(PKG_SOURCE) -C $(dir $(PKG_BUILD_DIR))
	touch $@

$(PKG_BUILD_DIR)/.built: $(PKG_BUILD_DIR)/.prepared
	$(Build/Configure)
	$(Build/Compile)
	$(Build/Install)
	touch $@

define BuildPackage
$(foreach field,TITLE CATEGORY SECTION,$(eval $(field):=)) \
$(eval DESCRIPTION:=) \
$(eval $(Package/$(1))) \
$(foreach field,TITLE CATEGORY SECTION,$(call required,$(field),$(1))) \
$(call required,PKG_VERSION,$(1)) $(call required,PKG_RELEASE,$(1)) \
$(call required,PKG_HASH,$(1)) $(call required,PKG_LICENSE,$(1)) \
$(call required,PKG_MAINTAINER,$(1)) \
$(if $(DESCRIPTION),$(error $(1): DESCRIPTION is to be Package/$(1)/description))
compile: $(OUT)/$(1).done
$(OUT)/$(1).done: $(PKG_BUILD_DIR)/.built
	rm -rf $(OUT)/root-$(1)
	mkdir -p $(OUT)/root-$(1)
	$(call Package/$(1)/install,$(OUT)/root-$(1))
	: >$(OUT)/$(1).conffiles
	$(foreach file,$(Package/$(1)/conffiles),echo $(file) >>$(OUT)/$(1).conffiles;)
	echo $(DEPENDS) >$(OUT)/$(1).depends
	touch $$@
endef
.DEFAULT_GOAL := compile
