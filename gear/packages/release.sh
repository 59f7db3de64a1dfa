# A release of the files as they lie here, for two of the processors: whole, static, the same when
# it is built elsewhere, and licensed file by file.
# shellcheck shell=bash disable=SC2154

readonly release=$checked/release
readonly RELEASE_NEEDS='readelf:binutils qemu-mipsel-static:qemu-user-static reuse:reuse'
readonly release_targets='musl-x86_64 musl-mipsel'

release_is_whole() {
    local version=$1 wanted
    wanted=$(printf '%s\n' "modemd-$version".{spdx.json,tar.gz} \
        "modemd-$version"-{buildroot,musl-mipsel,musl-x86_64,openwrt,yocto}.tar.gz SHA256SUMS |
        LC_ALL=C sort | xargs)
    same "$wanted" "$(below build/dist)" && (cd build/dist && sha256sum --check SHA256SUMS)
}

release_programs_need_nothing() {
    local target program root
    for target in $release_targets; do
        root=$release/$target
        mkdir -p "$root"
        tar -xzf "build/dist/modemd-$1-$target.tar.gz" --strip-components=1 -C "$root"
        [[ -s $root/usr/share/doc/modemd/licences/musl ]] || return 1
        for program in "$root/usr/sbin/modemd" "$root/usr/bin/modemctl"; do
            ! readelf -d "$program" | grep NEEDED || return 1
        done
    done
    same "modemctl $1" "$("$release/musl-x86_64/usr/bin/modemctl" --version)" &&
        same "modemctl $1" "$(qemu-mipsel-static "$release/musl-mipsel/usr/bin/modemctl" --version)"
}

# In another folder, without git, from nothing but the source archive.
release_is_built_elsewhere() {
    local elsewhere program
    elsewhere=$(mktemp -d)
    tar -xzf "build/dist/modemd-$1.tar.gz" -C "$elsewhere"
    (cd "$elsewhere/modemd-$1" && ! git rev-parse 2>/dev/null && CCACHE_DISABLE=1 TZ=Asia/Tokyo \
        scripts/release musl-x86_64) || return 1
    for program in "modemd-$1.tar.gz" "modemd-$1-musl-x86_64.tar.gz"; do
        cmp "$elsewhere/modemd-$1/build/dist/$program" "build/dist/$program" || return 1
    done
    rm -r "$elsewhere"
}

check_release() {
    local version
    version=$(scripts/version)
    need_packages "$BUILD_NEEDS" "$RELEASE_NEEDS"
    rm -rf "$release"
    check "release: every file has a licence" reuse lint
    # shellcheck disable=SC2086  # a list of words
    check "release: it is made" scripts/release --dirty $release_targets
    check "release: nothing is missing, and the checksums are right" release_is_whole "$version"
    check "release: the programs need no library" release_programs_need_nothing "$version"
    check "release: the same bytes in another folder, without git" \
        release_is_built_elsewhere "$version"
}
