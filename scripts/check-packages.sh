#!/bin/sh
# Builds the Debian packages, has lintian and systemd judge them, and does in a clean Debian what a stranger would:
# install them, boot the sample host, build a program on the library, stage a change with it, boot again, remove them.
set -eu

cd "$(dirname "$0")/.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 1' HUP INT TERM

fail() {
    echo "packages: $1" >&2
    exit 1
}

skip() {
    echo "packages: built and sound; not tried in a clean system: $1"
    exit 0
}

rm -rf build/packages
cmake --preset package >/dev/null
cmake --build --preset package
cpack --preset package >"$scratch/cpack" 2>&1 || {
    cat "$scratch/cpack" >&2
    fail "cpack failed"
}
# There is no bug of Debian's to close, and CPack runs ldconfig besides triggering it.
lintian --fail-on error,warning --allow-root --suppress-tags initial-upload-closes-no-bugs,maintscript-calls-ldconfig \
    build/packages/*.deb

# The units, beside the system's own targets, with the program where they expect it.
for package in build/packages/*.deb; do
    dpkg -x "$package" "$scratch/installed"
done
cp -P /lib/systemd/system/*.target /lib/systemd/system/*.slice "$scratch/installed/usr/lib/systemd/system/"
for unit in packaging/*.service*; do
    name=${unit##*/}
    systemd-analyze verify --man=no --root="$scratch/installed" "${name%.in}" >"$scratch/verify" 2>&1 ||
        echo "exit status $?" >>"$scratch/verify"
    [ ! -s "$scratch/verify" ] || {
        cat "$scratch/verify" >&2
        fail "$unit is refused"
    }
done

# ---- a clean system -------------------------------------------------------------------------------------------------

[ "$(id -u)" -eq 0 ] || skip "needs root"
root=$scratch/system
mkdir "$root"
unshare --mount true 2>/dev/null || skip "needs the right to mount"

# Kept between runs: what makes a bare Debian of the mirror that this machine uses.
base=build/clean-system.tar
if [ ! -f "$base" ]; then
    # shellcheck disable=SC2016 # the field is apt's
    mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Codename: bookworm' | sed q)
    unshare --mount debootstrap --variant=minbase --include=g++,pkg-config bookworm "$root" "$mirror" >"$scratch/debootstrap" 2>&1 || {
        tail -3 "$scratch/debootstrap" >&2
        skip "no clean system could be made from $mirror"
    }
    tar -cf "$base.new" -C "$root" .
    mv "$base.new" "$base"
else
    tar -xf "$base" -C "$root"
fi

mkdir "$root/packages"
cp build/packages/*.deb "$root/packages"
cp scripts/use-packages.sh "$root/packages"
cp /etc/resolv.conf "$root/etc/resolv.conf"
unshare --mount chroot "$root" /packages/use-packages.sh >"$scratch/use" 2>&1 || {
    cat "$scratch/use" >&2
    fail "the packages do not work in a clean system"
}
echo "packages: built, sound, and at work in a clean system"
