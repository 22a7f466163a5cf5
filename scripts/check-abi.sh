#!/bin/sh
# Compares the binary interface of a build with that of the last release, in packaging/abi: what was added passes, what a
# program built on the release would trip over fails. With --update the build's interface becomes the reference.
set -eu

cd "$(dirname "$0")/.."
update=false
if [ "${1:-}" = --update ]; then
    update=true
    shift
fi
build=${1:-build/debug}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp include/*.h platform/*.h "$scratch"

for library in "$build/libconfigstorectl.so" "$build/host/libnimbhost.so"; do
    name=$(basename "$library" .so)
    reference=packaging/abi/$name.abi
    if $update; then
        # Nothing of the machine or of the place of the build.
        abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --type-id-style hash \
            --headers-dir "$scratch" --drop-private-types --out-file "$reference" "$library"
        scripts/trim-abi.py "$reference"
    fi
    abidiff --no-added-syms --headers-dir2 "$scratch" --drop-private-types "$reference" "$library" >"$scratch/changes" || {
        cat "$scratch/changes"
        echo "abi: $name differs from the last release; for a new major one: scripts/check-abi.sh --update" >&2
        exit 1
    }
done
echo "abi: programs built on the last release work with this build"
