# The Buildroot tree: its options read by the configuration language's own program, its makefile run
# with rules of our own that expect and do what the system's do, as far as this package uses them,
# and a compiler for musl on mipsel.
# shellcheck shell=bash disable=SC2154

readonly buildroot=$checked/buildroot
readonly BUILDROOT_NEEDS='kconfig-conf:kconfig-frontends-nox readelf:binutils make:make'

# configure_buildroot CHOICE...: what becomes of these choices, in out/.config.
configure_buildroot() {
    local out=$PWD/$buildroot/out
    mkdir -p "$out"
    printf '%s=y\n' "$@" >"$out/.config"
    (cd gear/packages/buildroot-tree && CONFIG_='' KCONFIG_CONFIG=$out/.config \
        BR2_EXTERNAL_MODEMD_PATH=$OLDPWD/$buildroot/package kconfig-conf --olddefconfig Config.in)
}

readonly buildroot_toolchain='BR2_INSTALL_LIBSTDCPP BR2_TOOLCHAIN_GCC_AT_LEAST_7'
readonly buildroot_choice='BR2_PACKAGE_MODEMD BR2_PACKAGE_MODEMD_TOOLS'

# Without one of the things it depends on nobody is offered the package.
buildroot_options_are_right() {
    local missing
    # shellcheck disable=SC2086  # lists of words
    for missing in $buildroot_toolchain; do
        configure_buildroot ${buildroot_toolchain/$missing/} $buildroot_choice || return 1
        ! grep -q '^BR2_PACKAGE_MODEMD' "$buildroot/out/.config" || return 1
    done
    # shellcheck disable=SC2086
    configure_buildroot $buildroot_toolchain $buildroot_choice &&
        same "BR2_PACKAGE_MODEMD=y BR2_PACKAGE_MODEMD_TOOLS=y" \
            "$(grep '^BR2_PACKAGE' "$buildroot/out/.config" | sort | xargs)"
}

make_buildroot() {
    make -C gear/packages/buildroot-tree OUT="$PWD/$buildroot/out" TRIPLE=mipsel-linux-musl \
        BR2_EXTERNAL_MODEMD_PATH="$PWD/$buildroot/package" \
        TOOLCHAIN="$(scripts/musl-toolchain)" "$@"
}

buildroot_minds_the_digest() {
    local wrong=$PWD/$buildroot/wrong
    cp -r "$buildroot/package" "$wrong"
    sed -i 's/^sha256  ..../sha256  ffff/' "$wrong/package/modemd/modemd.hash"
    cp "$buildroot/out/.config" "$wrong"
    ! make_buildroot OUT="$wrong" BR2_EXTERNAL_MODEMD_PATH="$wrong" >"$wrong/said" 2>&1 &&
        grep 'tar.gz: FAILED' "$wrong/said"
}

buildroot_files_are_right() {
    same "etc/default/modemd etc/init.d/S50modemd usr/bin/modemctl \
$(printf 'usr/libexec/modemd/modemd-%s ' keeper run watch)usr/sbin/modemd" \
        "$(below "$buildroot/out/target")" &&
        same "CONFIG_HWCLOCK=y CONFIG_IFCONFIG=y CONFIG_PING=y CONFIG_UDHCPC=y" \
            "$(xargs <"$buildroot/out/busybox.config")" &&
        of_mipsel "$buildroot/out/target/usr/sbin/modemd" "$buildroot/out/target/usr/bin/modemctl"
}

check_buildroot() {
    need_packages "$BUILD_NEEDS" "$BUILDROOT_NEEDS"
    scripts/musl-toolchain >/dev/null
    rm -rf "$buildroot"
    check "Buildroot: the tree is put together" maker_package buildroot "$buildroot/package"
    check "Buildroot: its options depend on what it needs" buildroot_options_are_right
    check "Buildroot: make -n finds every rule" make_buildroot --dry-run
    check "Buildroot: another digest stops the build" buildroot_minds_the_digest
    check "Buildroot: the package is built for mipsel" make_buildroot
    check "Buildroot: the files are right" buildroot_files_are_right
}
