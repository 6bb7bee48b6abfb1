#!/usr/bin/env bash
# Within a clean root: installs packages, uses them, removes them and sees that nothing is left. Usage: inroot.sh tools|dev
set -euo pipefail

# But for what package tools themselves note, the user of the services, who may own recordings, and what Python compiles of
# other packages.
everything() {
    find / -xdev \( -path /proc -o -path /dev -o -path /tmp -o -path /var/lib/dpkg -o -path /var/lib/apt -o -path /var/cache \
        -o -path /var/log -o -path '*/__pycache__' ! -path '*/recording2/*' \) -prune -o -print | grep -vxE '/etc/(\.pwd\.lock|(passwd|group|shadow|gshadow)-?|ld\.so\.cache)' | sort
}

run() {
    printf '+ %s\n' "$*"
    "$@" >/tmp/output 2>&1 || {
        cat /tmp/output
        printf '"%s" failed\n' "$*"
        return 1
    }
}

# said WORDS: by what ran last
said() {
    grep -qF -- "$1" /tmp/output || {
        cat /tmp/output
        printf 'it did not say "%s"\n' "$1"
        return 1
    }
}

use_tools() {
    cd "$(mktemp -d)"
    for program in recstation rectool recview zelvod; do
        run "$program" --version
        said "$program "
    done
    run recstation -q -o . sim --duration 5s
    run rectool info ./*RX_1*.rec
    said 'The file is sound.'
    run rectool verify ./*.rec
    run rectool plot spectrum ./*RX_1*.rec -o picture.png
    run rectool types ./*RX_1*.rec
    run recstation -q -o . sweep <(printf '2026-11-21, 08:00:00, 100, 140, 10, 20, 1, 2, 3, 4\n')
    run getent passwd recording2
    if compgen -G '/tmp/debs/python3-recording2_*' >/dev/null; then
        run python3 -c 'import recording2; print(recording2.open(".").files)'
        said 'RX 1'
    fi
    use_archive
}

# As the service does it, but for systemd.
use_archive() {
    mkdir -p /tmp/storage /var/lib/recording2 /tmp/recordings
    printf '[archive]\nDirectory = "/var/lib/recording2/archive"\nStorage = "/tmp/storage"\n' >/tmp/archive.toml
    chown recording2 /tmp/storage /var/lib/recording2 /tmp/recordings
    chmod 1777 /tmp
    as_user=(setpriv --reuid recording2 --regid recording2 --clear-groups env ZELVO_CONFIG=/tmp/archive.toml)
    run "${as_user[@]}" zelvod --set-up
    run "${as_user[@]}" recstation -q -o /tmp/recordings sim --duration 2s
    run "${as_user[@]}" zelvod --once
    run "${as_user[@]}" rectool archive status
    [ -n "$(find /tmp/storage -name '*.rec')" ] || {
        printf 'nothing was moved to the storage\n'
        return 1
    }
}

use_dev() {
    cd "$(mktemp -d)"
    run cmake -S /tmp/outside -B by-cmake
    run cmake --build by-cmake
    run by-cmake/outside
    read -r -a flags <<<"$(pkg-config --cflags recording2)"
    read -r -a libraries <<<"$(pkg-config --libs recording2)"
    run g++ -std=c++20 -fPIC "${flags[@]}" /tmp/outside/main.cpp -o by-pkg-config "${libraries[@]}"
    run ./by-pkg-config
    cd /
}

# What installing anything makes the packages do that are here already, such as ldconfig.
settle() {
    local triggers package names
    for triggers in /var/lib/dpkg/info/*.triggers; do
        package=$(basename "${triggers%.triggers}")
        names=$(awk '/^interest/ { print $2 }' "$triggers")
        [ -z "$names" ] || run env DPKG_MAINTSCRIPT_PACKAGE="${package%:*}" "${triggers%.triggers}.postinst" triggered "$names"
    done
}

settle
case $1 in
    tools) debs=$(find /tmp/debs -name '*.deb' ! -name '*-dev_*') ;;
    dev) debs=$(find /tmp/debs -name 'lib*.deb') ;;
esac
everything >/tmp/before
# shellcheck disable=SC2086 # names without blanks
run apt-get install -y --no-install-recommends $debs
"use_$1"
if [ "$1" = tools ]; then
    # A registry is nobody's to delete but its owner's.
    run apt-get purge -y recording2-tools
    [ -d /var/lib/recording2/archive ]
    rm -r /var/lib/recording2
fi
# shellcheck disable=SC2046
run dpkg --purge $(for deb in $debs; do dpkg-deb -f "$deb" Package; done)
everything >/tmp/after
if ! diff /tmp/before /tmp/after; then
    printf 'what is marked with > was left, what is marked with < is missing\n'
    exit 1
fi
