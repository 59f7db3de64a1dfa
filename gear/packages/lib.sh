# Shared by the checks of the packages: counting, and a source tree to build from.
# shellcheck shell=bash

# Where all of them work.
readonly checked=build/packages

passed=0 failed=0

# check NAME COMMAND [ARGUMENT...]: runs it; shows what it said when it fails. A function that is
# asked for its result does not end at its first failure: steps that matter are joined by "&&".
check() {
    local name=$1 log
    shift
    mkdir -p "$checked/logs"
    log=$checked/logs/${name//[^[:alnum:]]/-}.log
    if "$@" >"$log" 2>&1 </dev/null; then
        echo "ok   $name"
        passed=$((passed + 1))
    else
        tail -n 40 "$log"
        echo "FAIL $name"
        failed=$((failed + 1))
    fi
}

# fresh_source FOLDER: the project's files as they lie here, as the source archive has them, in
# FOLDER/modemd-VERSION; prints that path.
fresh_source() {
    local version
    version=$(scripts/version)
    rm -rf "$1"
    mkdir -p "$1"
    scripts/release --source "$1/modemd-$version.tar.gz" >&2 &&
        tar -xzf "$1/modemd-$version.tar.gz" -C "$1" &&
        echo "$1/modemd-$version"
}

# maker_package SYSTEM FOLDER: that system's package as a release has it, in FOLDER.
maker_package() {
    local source
    source=$(fresh_source "$2.source") || return 1
    rm -rf "$2"
    scripts/release --package "$1" "$source.tar.gz" "$2"
}

# of_mipsel FILE...: programs for that processor.
of_mipsel() {
    local file
    for file in "$@"; do
        readelf -h "$file" | grep 'Machine: *MIPS' >/dev/null || return 1
        readelf -h "$file" | grep 'little endian' >/dev/null || return 1
    done
}

# below FOLDER: the names of its files, sorted, in one line.
below() {
    (cd "$1" && find . ! -type d -printf '%P\n' | LC_ALL=C sort | xargs)
}

# same WANTED FOUND: says both when they differ.
same() {
    [[ $1 == "$2" ]] || { printf 'wanted: %s\nfound:  %s\n' "$1" "$2"; return 1; }
}
