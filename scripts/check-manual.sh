#!/bin/sh
# The manual pages are sound, and configstorectl(1), which the build writes, lists the commands that the program has, as
# the program spells them.
set -eu

cd "$(dirname "$0")/.."
build=${1:-build/debug}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Whether the pages refer to manuals that this machine has depends on the machine.
if mandoc -Tlint -W style docs/man/*.[1-8] "$build"/man/*.1 2>&1 | grep -vE 'referenced manual not found|outdated mandoc.db'; then
    exit 1
fi

sed -n '/^\.Sh COMMANDS/,/^\.Sh [^C]/s/^\.It Ic //p' "$build/man/configstorectl.1" >"$scratch/manual"
"$build/apps/configstorectl" --help | sed -n '/^commands:/,/^$/s/^  \(.*[^ ]\)   *[^ ].*/\1/p' >"$scratch/program"
[ -s "$scratch/program" ]
diff -u --label "configstorectl(1)" --label "configstorectl --help" "$scratch/manual" "$scratch/program"
echo "manual: sound and complete"
