#!/usr/bin/env bash
# Builds the two Debian packages, installs them in a clean Debian root, tries what they promise, purges them, and shows
# that nothing is left. Needs root, mmdebstrap and the network (Debian's archive alone); the root and its packages are
# kept in build/packages, so that a second run needs little of it.
#
# Usage: try-packages.sh
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd -P)
packages=$root/build/packages
suite=bookworm
# What a person who installs has anyway, and what a developer who builds on corvel-dev has.
tools=(man-db bash-completion zsh fish cmake ninja-build g++ pkg-config)

say() { printf '== %s\n' "$*"; }

buildPackages() {
    say 'building the packages'
    cd "$root"
    cmake --preset package >/dev/null
    cmake --build --preset package >"$packages/build.log" || { tail -n 40 "$packages/build.log"; exit 1; }
    rm -f "$packages"/*.deb
    (cd "$root/build/package" && cpack -B "$packages" >"$packages/cpack.log") || { tail -n 40 "$packages/cpack.log"; exit 1; }
    rm -rf "$packages/_CPack_Packages"
    ls -l "$packages"/*.deb
    for package in "$packages"/corvel_*.deb; do
        if dpkg-deb --contents "$package" | grep -E '/include/|\.a$|\.cmake$|\.pc$'; then
            say 'development files in the package for users'
            exit 1
        fi
    done
    say 'the bundle in the package against the bundle that was built'
    diff <(cd "$root/build/package" && find Corvel.app -type f | sort) \
        <(dpkg-deb --fsys-tarfile "$packages"/corvel_*.deb | tar -t | grep -o 'Corvel\.app/.*[^/]$' | sort)
}

makeRoot() {
    local list
    list=$(IFS=,; printf '%s' "${tools[*]}")
    base=$packages/root-$(printf '%s' "$suite,$list" | sha256sum | cut -c 1-12).tar
    [[ -e $base ]] && return
    say "making a $suite root with ${tools[*]}"
    mmdebstrap --quiet --mode=root --variant=minbase --skip=cleanup/apt --include="$list,ca-certificates" \
        "$suite" "$packages/new.tar"
    mv "$packages/new.tar" "$base"
}

# In name spaces of its own, so that mounts and processes end with it.
tryPackages() {
    say 'trying them in the root'
    place=$(mktemp -d)
    trap 'rm -rf "$place"' EXIT
    tar -C "$place" -xf "$base"
    mkdir -p "$packages/archives/partial" "$place/try"
    cp -r "$packages"/*.deb "$root/examples" "$root/scripts/try-installed.sh" \
        "$root/tests/integration/manual/completions.sh" "$place/try"
    cp /etc/resolv.conf "$place/etc/"
    unshare --mount --pid --fork --kill-child bash -euc '
        mount -t proc proc "$0/proc"
        mkdir -p "$0/dev/shm" "$0/dev/pts"
        mount -t tmpfs tmpfs "$0/dev/shm"
        mount -t devpts -o newinstance,ptmxmode=0666 devpts "$0/dev/pts"
        ln -sf pts/ptmx "$0/dev/ptmx"
        mount --bind "$1" "$0/var/cache/apt/archives"
        exec chroot "$0" bash /try/try-installed.sh' "$place" "$packages/archives"
    say 'what a program that we did not write says about the movie'
    ffprobe -v error -show_entries stream=codec_name,nb_frames,width,height -of compact "$place/tmp/ball.mov"
}

mkdir -p "$packages"
buildPackages
makeRoot
tryPackages
say 'both packages work, and nothing is left of them'
