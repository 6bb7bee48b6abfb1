#!/usr/bin/env bash
# Makes the Debian packages of a build, has them checked, and installs, uses and removes them where there is nothing but
# what they need. Usage: debian.sh SOURCES BUILD
set -euo pipefail
sources=$1
build=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

skip() {
    printf '%s\n' "$*"
    exit 77
}

for program in dpkg-deb lintian unshare; do
    command -v "$program" >/dev/null || skip "The packages are not tried, as $program is not installed."
done
"$sources/scripts/package" --build "$build" "$work/debs" >"$work/made" || exit 1
lintian --fail-on error,warning "$work"/debs/*.deb 2>"$work/lintian.errors" || {
    cat "$work/lintian.errors"
    exit 1
}

[ "$(id -u)" -eq 0 ] || skip "The packages pass lintian; they are not installed, as only root can make a clean root."
unshare --mount --pid --fork true 2>/dev/null || skip "The packages pass lintian; they are not installed, as a clean root cannot be entered here."

# in_root SCRIPT ARGUMENT...
in_root() {
    unshare --mount --pid --fork bash -c '
        set -e
        mount --rbind /dev "$1/dev"
        mount -t proc proc "$1/proc"
        exec chroot "$1" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 HOME=/tmp \
            DEBIAN_FRONTEND=noninteractive bash "${@:2}"' bash "$work/root" "$@"
}

mkdir -p "$work/root"
packages=("$work"/debs/*.deb)
runtime=()
for package in "${packages[@]}"; do
    [[ $package == *-dev_* ]] || runtime+=("$package")
done
python3 "$here/cleanroot.py" "$work/root" apt "${runtime[@]}" || exit
mkdir -p "$work/root/tmp/debs" "$work/root/tmp/outside"
cp "${packages[@]}" "$work/root/tmp/debs"
cp "$here/inroot.sh" "$sources"/tests/integration/package/outside/* "$work/root/tmp/outside"
in_root /tmp/outside/inroot.sh tools

python3 "$here/cleanroot.py" "$work/root" apt g++ cmake make pkgconf "${packages[@]}" || exit
in_root /tmp/outside/inroot.sh dev
