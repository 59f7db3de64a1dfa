# Shared by the commands in this folder: what they need from Debian, and how they build.
# shellcheck shell=bash disable=SC2034

# What a tool or header is called and the package that brings it.
readonly BUILD_NEEDS='cmake:cmake g++:g++ ninja:ninja-build python3:python3'
readonly ROUTER_NEEDS='busybox:busybox-static bwrap:bubblewrap unshare:util-linux ip:iproute2 dnsmasq:dnsmasq-base'
# Debian's own Python is the one that sees Debian's packages.
readonly DEMO_NEEDS='/usr/bin/python3:python3 /usr/lib/python3/dist-packages/rich:python3-rich'
readonly TEST_NEEDS='/usr/include/gtest/gtest.h:libgtest-dev /usr/include/gmock/gmock.h:libgmock-dev
    /usr/lib/python3/dist-packages/pytest:python3-pytest
    /usr/lib/python3/dist-packages/xdist:python3-pytest-xdist readelf:binutils git:git
    /usr/lib/python3/dist-packages/jsonschema:python3-jsonschema tmux:tmux
    gammu:gammu smsd:smstools systemd-analyze:systemd shellcheck:shellcheck
    /usr/lib/python3/dist-packages/yaml:python3-yaml dpkg-parsechangelog:dpkg-dev jq:jq'

step() {
    echo "==> $*"
}

is_there() {
    case $1 in
        /*) [[ -e $1 ]] ;;
        # The plain busybox package has no DHCP client and no DHCP server; the static one has.
        busybox) command -v busybox >/dev/null && busybox --list | grep -x udhcpc >/dev/null ;;
        *) PATH=$PATH:/usr/sbin:/sbin command -v "$1" >/dev/null ;;
    esac
}

# need_packages "THING:PACKAGE ..."...: installs the packages of the things that are missing.
need_packages() {
    local pair packages=() as_root=()
    # shellcheck disable=SC2048,SC2086  # lists of words
    for pair in $*; do
        is_there "${pair%%:*}" || packages+=("${pair#*:}")
    done
    [[ ${#packages[@]} -gt 0 ]] || return 0
    if [[ $EUID -ne 0 ]]; then
        command -v sudo >/dev/null || {
            echo "Missing Debian packages: ${packages[*]}. Install them, or run this as root." >&2
            return 1
        }
        as_root=(sudo)
    fi
    step "installing Debian packages: ${packages[*]}"
    local install=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq
        --no-install-recommends -o DPkg::Lock::Timeout=300 "${packages[@]}")
    "${install[@]}" >/dev/null 2>&1 </dev/null && return 0
    "${as_root[@]}" apt-get update -qq -o DPkg::Lock::Timeout=300 </dev/null
    "${install[@]}" >/dev/null </dev/null
}

# The supervisors that the tests start besides systemd and busybox, and udev's tool.
unpack_supervisors() {
    local into=build/supervisors
    scripts/unpack --into "$into/sysv" sysvinit-core sysv-rc startpar insserv sysvinit-utils
    scripts/unpack --into "$into/runit" runit
    scripts/unpack --into "$into/openrc" openrc libeinfo1 librc1
    scripts/unpack --into "$into/udev" udev
}

# build PRESET [CMAKE OPTION...] [-- TARGET...]: configures once, then builds what has changed.
build() {
    local preset=$1 options=() targets=()
    shift
    while [[ $# -gt 0 && $1 != -- ]]; do
        options+=("$1")
        shift
    done
    [[ $# -eq 0 ]] || { shift; targets=(--target "$@"); }
    local log=build/$preset/build.log cache=build/$preset/CMakeCache.txt
    mkdir -p "build/$preset"
    if [[ ! -e $cache || ${#options[@]} -gt 0 ]]; then
        step "configuring build/$preset"
        # A tree of another generator cannot be taken over.
        ! grep -qs '^CMAKE_GENERATOR:INTERNAL=' "$cache" ||
            grep -qx 'CMAKE_GENERATOR:INTERNAL=Ninja' "$cache" || options+=(--fresh)
        cmake --preset "$preset" "${options[@]}" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
    fi
    step "building build/$preset"
    local command=(cmake --build "build/$preset" --parallel "$(nproc)" "${targets[@]}")
    if [[ -t 1 ]]; then
        "${command[@]}"  # ninja writes its [n/m] over and over again
    elif ! "${command[@]}" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        return 1
    fi
}
