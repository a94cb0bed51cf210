#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# clean_root.sh PACKAGE FOLDER: makes FOLDER a small Debian of the release that runs here, with what
# PACKAGE depends on but without it, with a desktop and a user "person". What is there is kept as long
# as it is made of the same. Run as root in a mount namespace of its own.
set -euo pipefail
package=$(realpath "$1")
folder=$(realpath -m "$2")
# shellcheck source=/dev/null
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
readonly package folder release memory=$folder.memory
readonly root=$memory/root
readonly desktop=(dbus-daemon dbus-bin xfce4-panel xvfb)

fail() {
    printf 'failed: %s\n' "$*" >&2
    exit 1
}

# Where this machine gets its packages, as its own configuration says.
mirror() {
    # The words in brackets are for apt-get.
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(CODENAME) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' |
        awk -v release="$release" '$1 == release && $2 == "main" { print $3; exit }'
}

recipe() {
    sha256sum <"${BASH_SOURCE[0]}"
    printf '%s\n' "$release" "$(dpkg-deb -f "$package" Depends)"
}

# The same sources, keys and proxies as here.
copy_package_sources() {
    local name
    for name in sources.list sources.list.d trusted.gpg trusted.gpg.d keyrings auth.conf.d; do
        rm -rf "${root:?}/etc/apt/$name"
        [[ ! -e /etc/apt/$name ]] || cp -a "/etc/apt/$name" "$root/etc/apt/$name"
    done
    cp -an /usr/share/keyrings/. "$root/usr/share/keyrings"
    apt-config dump | sed -nE '/^Acquire::(http|https|Check|AllowInsecure)/p' >"$root/etc/apt/apt.conf.d/90host"
    cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
}

# Nothing is started there, and nothing has to survive a power failure.
prepare() {
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
    chmod +x "$root/usr/sbin/policy-rc.d"
    printf 'force-unsafe-io\n' >"$root/etc/dpkg/dpkg.cfg.d/quick"
    mount -t proc proc "$root/proc"
}

inside() {
    chroot "$root" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"
}

apt_install() {
    inside apt-get -q install -y --no-install-recommends "$@"
}

# What it depends on must be enough for it, before a desktop brings more.
install_dependencies() {
    local missing
    cp "$package" "$root/tmp/package.deb"
    apt_install /tmp/package.deb
    missing=$(inside ldd /usr/bin/orvanta-tray /usr/lib/orvanta-tray/modules/{desktop,digest}.so | sed -n '/not found/p')
    [[ -z $missing ]] || fail "the package does not depend on all it needs: $missing"
    inside orvanta-tray --version
    inside dpkg -P orvanta-tray
    rm "$root/tmp/package.deb"
}

make_root() {
    debootstrap --variant=minbase "$release" "$root" "$(mirror)"
    copy_package_sources
    prepare
    inside apt-get -q update
    install_dependencies
    apt_install "${desktop[@]}"
    inside useradd --create-home --uid 1000 person
    inside apt-get clean
    umount "$root/proc"
    rm -rf "$root"/var/lib/apt/lists/*
}

if [[ -f $folder.recipe && $(recipe) == "$(cat "$folder.recipe")" ]]; then
    echo "The root of an earlier run is made of the same."
    exit 0
fi
rm -rf "${folder:?}" "$folder.recipe"
# Made in memory, where thousands of small files are quick.
mkdir -p "$memory"
mount -t tmpfs -o size=4g,mode=755 tmpfs "$memory"
make_root
cp -a "$root" "$folder"
recipe >"$folder.recipe"
umount "$memory"
rmdir "$memory"
