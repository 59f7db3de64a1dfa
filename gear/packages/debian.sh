# The Debian packages: built from the source archive, judged by lintian, built again in another
# place, time and language, and put through an installation's life in a bare system.
# shellcheck shell=bash disable=SC2154,SC2016

readonly debian=$checked/debian bare_root=$checked/bare-root
readonly DEBIAN_NEEDS='dh:debhelper dpkg-buildpackage:dpkg-dev fakeroot:fakeroot lintian:lintian
    reprotest:reprotest disorderfs:disorderfs faketime:faketime debootstrap:debootstrap
    /usr/share/keyrings/debian-archive-keyring.gpg:debian-archive-keyring'

# With debian/ where the tools look for it.
debian_source() {
    local source
    source=$(fresh_source "$1") && cp -r packaging/debian "$source/debian" && echo "$source"
}

build_debian() {
    local source
    source=$(debian_source "$debian/build") || return 1
    (cd "$source" && dpkg-buildpackage --no-sign)
}

# Errors and warnings count; what it only informs about is shown.
judge_debian() {
    local log=$debian/lintian.txt
    lintian --info --display-info --pedantic --fail-on error,warning \
        "$debian"/build/*.changes >"$log" || { cat "$log"; return 1; }
    grep -E '^[IPX]:' "$log" || true
}

# What needs another user, or another kernel's help, stays as it is: see docs/packaging.md.
readonly variations=+all,-user_group,-domain_host

build_debian_twice() {
    local source
    source=$(debian_source "$debian/again") || return 1
    reprotest --no-diffoscope --variations="$variations" \
        --build-command 'dpkg-buildpackage --no-sign --build=binary' \
        "$source" '../*.deb' -- null
}

make_bare_root() {
    local mirror
    [[ ! -e $bare_root.done ]] || return 0
    rm -rf "$bare_root"
    mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | head -n 1)
    debootstrap --variant=minbase \
        --include=iputils-ping,net-tools,udhcpc,libstdc++6,systemd-standalone-sysusers \
        bookworm "$bare_root" "$mirror" && touch "$bare_root.done"
}

check_debian() {
    need_packages "$BUILD_NEEDS" "$DEBIAN_NEEDS"
    rm -rf "$debian"
    check "Debian: the packages are built" build_debian
    check "Debian: lintian has no error and no warning" judge_debian
    grep -hE '^[IPX]:' "$debian/lintian.txt" | sed 's/^/     lintian says: /' || true
    check "Debian: a bare system is there" make_bare_root
    check "Debian: installed, upgraded, removed and purged" unshare --mount --pid --net --ipc \
        --uts --fork --kill-child gear/packages/debian-life "$bare_root" "$debian/build"
    check "Debian: built twice, the same bytes" build_debian_twice
}
