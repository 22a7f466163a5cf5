#!/bin/sh
# clang-tidy over every source (a finding is an error), shellcheck over every script, codespell over every text, mandoc
# over the manual.
set -eu

cd "$(dirname "$0")/.."
build=${1:-build/debug}

git ls-files '*.sh' .ci/run | xargs shellcheck
shellcheck --shell bash packaging/completion/bash/*
# The words passed over are texts that other programs match, and mistakes that tests make on purpose.
git ls-files '*.cpp' '*.h' '*.md' '*.sh' '*.py' | xargs codespell --ignore-words scripts/codespell-words.txt
codespell --ignore-words scripts/codespell-words.txt docs/man/*
scripts/check-manual.sh "$build"
git ls-files 'configstore/*.cpp' 'desired/*.cpp' 'schema/*.cpp' 'image/*.cpp' 'errors/*.cpp' 'apps/*.cpp' 'host/*.cpp' |
    xargs -P "$(nproc)" -n 4 clang-tidy --quiet -p "$build" 2>/dev/null
echo "lint: clean"
