# The Yocto layer: there is no parser for it in Debian. Its form is held by tests/system/
# test_packages.py; here its own shell lines are run, as a build would.
# shellcheck shell=bash disable=SC2154

readonly yocto=$checked/yocto
readonly YOCTO_NEEDS='shellcheck:shellcheck'

# What an image gets before the classes take away what its init does not want.
readonly yocto_files=(etc/default/modemd etc/init.d/modemd
    lib/systemd/system/modemd-{reset.path,reset.service,watch.service,watch.timer}
    lib/systemd/system/modemd{,@}.service lib/udev/rules.d/60-modemd.rules
    usr/bin/modemctl usr/lib/{sysusers,tmpfiles}.d/modemd.conf
    usr/libexec/modemd/modemd-{keeper,run,watch} usr/libexec/modemd/systemd/ResetPCMCIA)

# Finds the archive as the fetcher does, beside the recipe in files/.
yocto_finds_its_archive() {
    local recipe source
    recipe=$(find "$yocto/layer/recipes-connectivity" -name '*.bb')
    source=$(dirname "$recipe")/files/$(basename "$recipe" .bb | tr _ -).tar.gz
    mkdir -p "$yocto/sources"
    tar -xzf "$source" -C "$yocto/sources" &&
        [[ -e $yocto/sources/modemd-$(scripts/version)/LICENSE ]]
}

# The recipe's lines behind "do_install:append", as a shell has them.
write_installer() {
    {
        echo '#!/bin/sh -eu'
        sed -n '/^do_install:append() {$/,/^}$/p' "$yocto"/layer/recipes-connectivity/modemd/*.bb |
            sed '1d;$d;s/^    //'
    } >"$yocto/install.sh"
}

yocto_installer_is_clean() {
    write_installer
    # The variables are the build's, without blanks.
    shellcheck --exclude=SC2154,SC2086 "$yocto/install.sh"
}

yocto_files_are_right() {
    local root=$PWD/$yocto/root build=$yocto/build
    mkdir -p "$build"
    echo "for the sake of its name" >"$build/modemctl"
    write_installer
    D=$root S=$yocto/sources/modemd-$(scripts/version) B=$build bindir=/usr/bin sysconfdir=/etc \
        libexecdir=/usr/libexec nonarch_libdir=/usr/lib nonarch_base_libdir=/lib \
        systemd_system_unitdir=/lib/systemd/system sh -eu "$yocto/install.sh" || return 1
    below "$root" | xargs -n 1 | diff - <(printf '%s\n' "${yocto_files[@]}")
}

check_yocto() {
    need_packages "$BUILD_NEEDS" "$YOCTO_NEEDS"
    rm -rf "$yocto"
    check "Yocto: the layer is put together" maker_package yocto "$yocto/layer"
    check "Yocto: the recipe finds its archive" yocto_finds_its_archive
    check "Yocto: its shell lines are clean" yocto_installer_is_clean
    check "Yocto: they install what they should" yocto_files_are_right
}
