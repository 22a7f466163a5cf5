#!/bin/sh
# Installs what building and testing need, on Debian 12; with --ci also what only the checks before a merge need.
# Does nothing when everything is there.
set -eu

packages="g++ cmake ninja-build ccache git pkg-config
    rapidjson-dev libvalijson-dev libspdlog-dev libfmt-dev libcli11-dev libsqlite3-dev libxml2-dev libedit-dev
    libgtest-dev libgmock-dev libbenchmark-dev uuid-dev python3 python3-jsonschema sqlite3
    iproute2 util-linux"
ci_packages="clang clang-format clang-tidy libclang-rt-14-dev codespell shellcheck doxygen mandoc abigail-tools
    lintian debootstrap dpkg-dev file systemd zsh"
case "${1:-}" in
--ci) packages="$packages $ci_packages" ;;
esac

missing=""
for package in $packages; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=""
[ "$(id -u)" -eq 0 ] || as_root=sudo
echo "Installing:$missing"
$as_root apt-get update -qq
# shellcheck disable=SC2086 # the list is words
DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -qq --no-install-recommends $missing >/dev/null
