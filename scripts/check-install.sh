#!/bin/sh
# Installs a build into an empty prefix and uses it as a stranger would: the program boots the sample host, a program of
# one's own builds with pkg-config and with CMake and stages a change that the next boot applies.
set -eu

sources=$(cd "$(dirname "$0")/.." && pwd)
cd "$sources"
build=${1:-build/debug}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/prefix

fail() {
    echo "install: $1" >&2
    exit 1
}

cmake --install "$build" --prefix "$prefix" >/dev/null
program=$prefix/bin/configstorectl
examples=$prefix/share/doc/configstorectl/examples
pkgconfig=$(dirname "$(find "$prefix" -name configstorectl.pc)")
libraries=$(dirname "$pkgconfig")

# Every page, unit and document that the sources hold is there.
for page in docs/man/*; do
    name=$(basename "$page" .in)
    [ -f "$prefix/share/man/man${name##*.}/$name" ] || fail "$page is not installed"
done
for unit in packaging/*.service*; do
    name=${unit##*/}
    [ -f "$prefix/lib/systemd/system/${name%.in}" ] || fail "$unit is not installed"
done
for document in README.md CHANGELOG.md LICENSE docs/*.md; do
    [ -f "$prefix/share/doc/configstorectl/$document" ] || fail "$document is not installed"
done
"$prefix/bin/zelsh" --version >/dev/null || fail "zelsh does not run"

# Each header stands alone.
for header in "$prefix"/include/configstorectl/*.h; do
    printf '#include <%s>\n' "${header##*/}" >"$scratch/header.cpp"
    g++ -std=c++20 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I"${header%/*}" "$scratch/header.cpp"
done

# shellcheck disable=SC2046 # the flags are words
g++ -std=c++20 -Wall -Wextra -Wpedantic -Werror "$examples/consumer/main.cpp" -o "$scratch/by-pkgconfig" \
    $(PKG_CONFIG_PATH="$pkgconfig" pkg-config --cflags --libs configstorectl) -Wl,-rpath,"$libraries"
cmake -G Ninja -S "$examples/consumer" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Werror" >/dev/null
cmake --build "$scratch/consumer" >/dev/null

stages() {
    "$examples/sample-host.sh" "$scratch/host"
    "$program" --root "$scratch/host" boot load >/dev/null
    "$1" "$scratch/host" examples/host/desired/datacentre.json >"$scratch/said" || fail "$1 failed"
    grep -q '^last boot: {"isBootComplete":false' "$scratch/said" || fail "$1 says nothing of the last boot"
    "$program" --root "$scratch/host" boot load --no-restore >/dev/null
    "$program" --root "$scratch/host" --json config show nimb/time/ntp | grep -q ntp3.lab.example ||
        fail "what $1 staged was not applied"
    ! "$1" "$scratch/host" examples/host/desired/mistaken.json >"$scratch/said" 2>&1 || fail "$1 staged mistakes"
    rm -rf "$scratch/host"
}
stages "$scratch/by-pkgconfig"
stages "$scratch/consumer/consumer"
LD_LIBRARY_PATH="$libraries" python3 "$examples/consumer/kernel_facts.py" 'ls /' | grep -q '^system/' ||
    fail "kernel_facts.py finds no kernel"
echo "install: tree, headers, programs and consumers are right"
