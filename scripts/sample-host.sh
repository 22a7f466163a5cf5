#!/bin/sh
# Copies the sample host into the folder ROOT, or lays an overlay of it over the host that is there.
set -eu

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
    echo "usage: $0 ROOT [OVERLAY]" >&2
    exit 2
fi
root=$1
overlay=${2:-}
# Beside the sources' scripts, or, installed, beside the script itself.
sample=$(dirname "$0")/../examples/host
[ -d "$sample" ] || sample=$(dirname "$0")/host

if [ -z "$overlay" ]; then
    mkdir -p "$root/tmp" "$root/var/run/talvor/files" "$root/usr/lib/talvor/configmanager/upgrade/lib"
    cp -R "$sample/root/." "$root/"
    exit 0
fi

cp -R "$sample/overlays/$overlay/." "$root/"
if [ -f "$sample/overlays/$overlay.removes" ]; then
    while read -r path; do
        rm -f "$root/$path"
    done <"$sample/overlays/$overlay.removes"
fi
