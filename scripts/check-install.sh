#!/bin/sh
# Installs a build into an empty prefix and uses it as a stranger would: the program runs, a consumer builds with
# pkg-config alone, and the libraries export nothing beyond their headers.
set -eu

cd "$(dirname "$0")/.."
build=${1:-build/debug}
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

cmake --install "$build" --prefix "$prefix" >/dev/null
pkgconfig=$(dirname "$(find "$prefix" -name configstorectl.pc)")
libraries=$(dirname "$pkgconfig")

"$prefix/bin/configstorectl" --version >/dev/null
# shellcheck disable=SC2046 # the flags are words
g++ -std=c++20 -Wall -Wextra -Werror examples/consumer/main.cpp -o "$prefix/consumer" \
    $(PKG_CONFIG_PATH="$pkgconfig" pkg-config --cflags --libs configstorectl) -Wl,-rpath,"$libraries"
status=0
mkdir "$prefix/host"
"$prefix/consumer" "$prefix/host" 2>"$prefix/message" || status=$?
# An empty host has no store, so the one right answer is the failure that says so.
if [ "$status" -ne 2 ] || ! grep -q '^consumer: 2000: ' "$prefix/message"; then
    echo "consumer: unexpected answer (status $status)"
    cat "$prefix/message"
    exit 1
fi

for library in libconfigstorectl.so libnimbhost.so; do
    stray=$(nm -DC --defined-only "$libraries/$library" | cut -c18- |
        grep -vE '^. ((typeinfo|typeinfo name|vtable) for )?(NimbConfigStore|NimbImage|NimbSchemaStore|NimbConfigUpgrade|DBStore|JsonValidator|ConfigStoreDocument|HostCtl::Lib|CSLogger)::|^. (ZEL|ORV_|Host|SetHostRoot|IsRealHost|File_Exists|FeatureState_)|^A (CONFIGSTORECTL|NIMBHOST)_' || true)
    [ -z "$stray" ] || {
        printf '%s exports names that no header declares:\n%s\n' "$library" "$stray"
        exit 1
    }
done
echo "install: program, consumer and exported names are right"
