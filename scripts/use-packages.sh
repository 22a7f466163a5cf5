#!/bin/sh
# What a stranger does with the packages, in a system that holds nothing of the project; check-packages.sh runs it there.
set -eux

export DEBIAN_FRONTEND=noninteractive LC_ALL=C
apt-get update
apt-get install -y --no-install-recommends /packages/*.deb

examples=/usr/share/doc/configstorectl/examples
"$examples/sample-host.sh" /tmp/host
configstorectl --version
configstorectl --root /tmp/host boot load
configstorectl --root /tmp/host boot finish
configstorectl --root /tmp/host store backup
zelsh --root /tmp/host -c 'get /system/bootFsUUID'

# shellcheck disable=SC2046 # the flags are words
g++ -std=c++20 "$examples/consumer/main.cpp" -o /tmp/consumer $(pkg-config --cflags --libs configstorectl)
/tmp/consumer /tmp/host "$examples/host/desired/datacentre.json"
configstorectl --root /tmp/host store backup
configstorectl --root /tmp/host boot load
configstorectl --root /tmp/host --json config show nimb/time/ntp | grep ntp3.lab.example

apt-get purge -y configstorectl libconfigstorectl1 libconfigstorectl-dev
test -z "$(find / -xdev -path /packages -prune -o -path /tmp -prune -o -name '*configstorectl*' -print)"
