# The flags that the system gives a program built with CMake: optimised by the target's flags alone.
# The compiler at hand has its libraries as archives that go into a program of a fixed place only.
define Build/Configure
	cmake -S $(PKG_BUILD_DIR) -B $(PKG_BUILD_DIR) -G Ninja \
		-DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_VERSION=1 -DCMAKE_SYSTEM_PROCESSOR=mipsel \
		-DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-DNDEBUG" \
		-DCMAKE_CXX_COMPILER="$(TARGET_CXX)" -DCMAKE_CXX_FLAGS="$(TARGET_CXXFLAGS)" \
		-DCMAKE_AR="$(TOOLCHAIN)/musl-ar" -DCMAKE_RANLIB="$(TOOLCHAIN)/musl-ranlib" \
		-DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY \
		-DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_SKIP_RPATH=ON \
		-DMODEMD_STATIC=ALL -DCMAKE_EXE_LINKER_FLAGS="-flto -Os" $(CMAKE_OPTIONS)
endef

define Build/Compile
	cmake --build $(PKG_BUILD_DIR)
endef

define Build/Install
	DESTDIR=$(PKG_INSTALL_DIR) cmake --install $(PKG_BUILD_DIR)
endef
