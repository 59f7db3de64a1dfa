# The OpenWrt package: its Makefile, run with rules of our own that expect and do what the system's
# do, as far as this package uses them, and a compiler for musl on mipsel.
# shellcheck shell=bash disable=SC2154,SC2016

readonly openwrt=$checked/openwrt
readonly OPENWRT_NEEDS='shellcheck:shellcheck readelf:binutils make:make
    qemu-mipsel-static:qemu-user-static'

make_openwrt() {
    make -C "$openwrt/package" TOPDIR="$PWD/gear/packages/openwrt-tree" OUT="$PWD/$openwrt/out" \
        TRIPLE=mipsel-linux-musl TOOLCHAIN="$(scripts/musl-toolchain)" "$@"
}

openwrt_files_are_right() {
    same "etc/config/modemd etc/init.d/modemd usr/libexec/modemd/modemd-watch usr/sbin/modemd" \
        "$(below "$openwrt/out/root-modemd")" &&
        same "usr/bin/modemctl" "$(below "$openwrt/out/root-modemctl")" &&
        same /etc/config/modemd "$(<"$openwrt/out/modemd.conffiles")" &&
        same +libstdcpp "$(<"$openwrt/out/modemd.depends")" &&
        of_mipsel "$openwrt/out/root-modemd/usr/sbin/modemd" \
            "$openwrt/out/root-modemctl/usr/bin/modemctl"
}

# A digest that is not the archive's stops the build.
openwrt_minds_the_digest() {
    local wrong=$PWD/$openwrt/wrong
    mkdir -p "$wrong"
    ! make_openwrt OUT="$wrong" PKG_HASH="$(printf '0%.0s' {1..64})" >"$wrong/said" 2>&1 &&
        grep 'tar.gz: FAILED' "$wrong/said"
}

# Its own test, where the packages lie in a root.
openwrt_test_sees() {
    local root=$PWD/$openwrt/root version=$1
    rm -rf "$root"
    mkdir -p "$root"
    cp -r "$openwrt"/out/root-modemd/. "$openwrt"/out/root-modemctl/. "$root"
    printf '#!/bin/sh\nexec qemu-mipsel-static "%s" "$@"\n' "$root/usr/bin/modemctl" \
        >"$root/modemctl"
    chmod +x "$root/modemctl"
    unshare --mount --user --map-root-user sh -ec '
        mount --bind "$1/usr/sbin" /usr/sbin
        PATH=$1:$PATH
        for package in modemd modemctl; do "$2/test.sh" "$package" "$3"; done
    ' sh "$root" "$PWD/$openwrt/package" "$version"
}

check_openwrt() {
    need_packages "$BUILD_NEEDS" "$OPENWRT_NEEDS"
    scripts/musl-toolchain >/dev/null
    rm -rf "$openwrt"
    check "OpenWrt: the package is put together" maker_package openwrt "$openwrt/package"
    check "OpenWrt: its scripts are clean" find "$openwrt/package" -name '*.sh' -exec \
        shellcheck --shell=dash {} +
    check "OpenWrt: make -n finds every rule" make_openwrt --dry-run
    check "OpenWrt: another digest stops the build" openwrt_minds_the_digest
    check "OpenWrt: the packages are built for mipsel" make_openwrt
    check "OpenWrt: the files are right" openwrt_files_are_right
    check "OpenWrt: its test sees the version" openwrt_test_sees "$(scripts/version)"
}
