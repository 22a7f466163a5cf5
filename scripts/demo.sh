#!/bin/sh
# Boots the sample host a few times in a throwaway root and tells what happens.
#
# demo.sh [--check | --update-golden] [--build DIR]
#   --check          compare with the golden story and print the differences
#   --update-golden  make this run the golden story
#   --build DIR      where the program was built (default: build/debug)
set -eu

sources=$(cd "$(dirname "$0")/.." && pwd)
golden=$sources/examples/host/demo.golden
build=$sources/build/debug
mode=show
while [ $# -gt 0 ]; do
    case $1 in
    --check) mode=check ;;
    --update-golden) mode=update ;;
    --build)
        shift
        build=${1:?--build takes a folder}
        ;;
    *)
        sed -n '2,7s/^# \{0,1\}//p' "$0" >&2
        exit 2
        ;;
    esac
    shift
done

case $build in
/*) ;;
*) build=$PWD/$build ;;
esac
program=$build/apps/configstorectl
shell=$build/apps/zelsh
module=$build/examples/host/upgrade-module/host-3.3-upgrade.so
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
trap 'exit 1' HUP INT TERM
root=
rows=$scratch/rows

# ---- telling ----------------------------------------------------------------------------------------------------

bold=""
plain=""
if [ -t 1 ] && [ "$mode" = show ]; then
    bold=$(printf '\033[1m')
    plain=$(printf '\033[0m')
fi

scene() {
    printf '\n%s== %s%s\n\n' "$bold" "$1" "$plain"
}

tell() {
    printf '%s\n' "$*" | fold -s -w 100 | sed 's/ *$//'
}

control() {
    "$program" --root "$root" "$@"
}

# Times differ from run to run.
settle() {
    sed -E -e 's/[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3}Z/2026-01-01T00:00:00.000Z/g' \
        -e 's/[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}/2026-01-01 00:00:00/g' -e 's/ +$//'
}

# A word as one would type it.
typed() {
    case $1 in
    *[!A-Za-z0-9_./:=-]*) printf "'%s'" "$1" ;;
    *) printf '%s' "$1" ;;
    esac
}

# Shows a command and what it prints.
run() {
    printf '\n%s$ configstorectl' "$bold"
    for word in "$@"; do
        printf ' '
        typed "$word"
    done
    printf '%s\n' "$plain"
    status=0
    control "$@" >"$scratch/output" 2>&1 || status=$?
    settle <"$scratch/output"
    [ "$status" -eq 0 ] || printf '(exit status %d)\n' "$status"
}

# Rows of the store that came (+), went (-) or changed (- and +) since the last time.
changes() {
    printf '\n%sRows of the store that changed%s\n' "$bold" "$plain"
    control config list | sed 1d | tr -s ' ' >"$rows.new"
    diff -U 0 "$rows" "$rows.new" | sed -n -e '/^---/d' -e '/^+++/d' -e 's/^[-+]/& /p' >"$scratch/changes"
    [ -s "$scratch/changes" ] || echo "(none)" >"$scratch/changes"
    cat "$scratch/changes"
    mv "$rows.new" "$rows"
}

# ---- what the world does to a host ------------------------------------------------------------------------------

# The live stores are on a ramdisk: they go when the power goes. So does /var/run.
power_off() {
    rm -rf "$root/etc/talvor/configstore" "$root/var/run"
    mkdir -p "$root/etc/talvor/configstore" "$root/var/run/talvor/files"
}

damage_backup() {
    printf 'bad sector' | dd of="$root/var/lib/talvor/configstore/backup/current-store-1" bs=1 seek=16384 conv=notrunc 2>/dev/null
}

install_release_3_3() {
    "$sources/scripts/sample-host.sh" "$root" upgrade
    cp "$module" "$root/usr/lib/talvor/configmanager/upgrade/lib/"
}

# ---- the story --------------------------------------------------------------------------------------------------

new_host() {
    root=$scratch/$1
    "$sources/scripts/sample-host.sh" "$root"
    : >"$rows"
}

fresh_host() {
    scene "A host as the installer leaves it"
    tell "Packages are installed, a boot configuration document waits, and there is no configuration store yet."
    new_host host
    run image list
}

first_boot() {
    scene "First boot: no backup to restore"
    tell "The boot finds no backup: it creates the stores, registers the schemas that the packages declare, writes" \
        "their default configuration, and applies the boot configuration document."
    run boot load
    changes
    run boot facts
    run default show nimb/authentication/user_accounts
    printf '\n'
    tell "Services start. Then the boot is over, and the store is backed up."
    rm "$root/var/lib/talvor/firstboot/current-store-1"
    run autoconf end
    run boot record set "14 of 14 services started"
    run boot finish
    run install-info "rack 7, slot 11"
    run store backup
}

ordinary_boot() {
    scene "An ordinary boot: restored from the backup"
    tell "The power goes, and with it the live store, which is on a ramdisk. The next boot copies the backup back." \
        "The boot bank is the same, so schemas are not processed again."
    power_off
    run boot load
    changes
    run boot facts
    run install-info
    printf '\n'
    tell "Which rows does no service vouch for yet?"
    run boot failures
    control autoconf end >"$scratch/output"
    control boot finish >"$scratch/output"
}

desired_documents() {
    scene "A desired configuration: validated, staged, foreseen"
    tell "Management software wants another configuration. A document is checked against the schemas before it is" \
        "handed over; every mistake is named with its place, and nothing is staged."
    run desired validate examples/host/desired/mistaken.json
    run desired validate examples/host/desired/datacentre.json
    printf '\n'
    tell "A sound one is staged for the next boot, as one transaction. Rows of objects that it does not mention come" \
        "from their defaults; the default of the name servers it gives up."
    run desired set examples/host/desired/datacentre.json
    printf '\n'
    tell "Nothing in force has changed. What will the next boot do? It is tried on a copy of the host."
    changes
    run desired plan
}

desired_boot() {
    scene "The boot that applies it"
    tell "The store is backed up, the host restarts, and the rows change as foreseen."
    run store backup
    power_off
    run boot load
    changes
    run config show nimb/time/ntp
    printf '\n'
    tell "Services take their configuration up; which rows does none vouch for yet? Then the boot is recorded. The" \
        "next one will only sweep two rows away that the document left empty."
    run boot failures
    run boot record set "15 of 15 services started"
    run boot record
    control autoconf end >"$scratch/output"
    control boot finish >"$scratch/output"
    run desired plan
    printf '\n'
    tell "One object more is to go, through the host's management interface."
    run desired delete nimb/network/routes
    run desired plan
    run store backup
    power_off
    run boot load
    changes
    control autoconf end >"$scratch/output"
    control boot finish >"$scratch/output"
}

damaged_backup() {
    scene "A boot with a damaged backup"
    tell "A bad sector in the backup: the consistency check refuses it. The host starts over with a fresh store and" \
        "the boot configuration document rather than with half a store, and says so. The document brings" \
        "its rows again; what only the old store knew is gone, the desired configuration too."
    power_off
    damage_backup
    run boot load
    changes
    run install-info
    control autoconf end >"$scratch/output"
    control boot finish >"$scratch/output"
    run store check
    run store backup
}

software_upgrade() {
    scene "A software upgrade"
    tell "Release 3.3 is on the other boot bank. It brings time-sync 2.0.0, whose time servers are objects, and" \
        "does without perf-sampler. Its upgrade module carries the old values over; what no schema describes any" \
        "more is cleaned away. An earlier boot stage has listed the files to look at."
    run config show nimb/time/ntp
    power_off
    install_release_3_3
    run files track non-schema etc/talvor/sampler.conf etc/hosts
    run boot load
    changes
    run boot facts
    run config show nimb/time/ntp
    printf '\n'
    tell "The sampler's configuration file had no schema any more; /etc/hosts has one."
    removed_or_kept /etc/talvor/sampler.conf /etc/hosts
    printf '\n'
    tell "Of the data files only the baseline stays, which the module put on record."
    run cleanup datafiles
    removed_or_kept /var/cache/datafiles/perf-sampler/samples.csv /var/cache/datafiles/health-agent/baseline.csv
    control autoconf end >"$scratch/output"
    run boot finish
}

bad_delivery() {
    scene "A bad delivery"
    tell "Another host gets an add-on with a mistake in each of its files, the boot document too. Each mistake is" \
        "reported by name; everything that is sound is in force."
    new_host other-host
    "$sources/scripts/sample-host.sh" "$root" broken
    run boot load
    changes
    run schema list
    printf '\n%s$ cat /var/run/talvor/files/errors-storage-vault-1.2.0_1.0.json%s\n' "$bold" "$plain"
    cat "$root/var/run/talvor/files/errors-storage-vault-1.2.0_1.0.json"
    printf '\n\n'
    tell "Then a schema file arrives that was cut off half way. Processing ends there, names the file, and the" \
        "schemas of before stand."
    "$sources/scripts/sample-host.sh" "$root" unparsable-schema
    run schema process
    run default show nimb/hardware/power
    run events
}

# Shows a line of the shell and what it prints.
look() {
    printf '\n%szelsh> %s%s\n' "$bold" "$1" "$plain"
    status=0
    "$shell" --root "$root" -c "$1" >"$scratch/output" 2>&1 || status=$?
    cat "$scratch/output"
    [ "$status" -eq 0 ] || printf '(exit status %d)\n' "$status"
}

kernel_shell() {
    scene "A look at the kernel"
    tell "The kernel's information is a tree. The shell zelsh lists, reads and sets it; on a real host it is the" \
        "running kernel, here the facts of the sample host."
    new_host looked-at-host
    look 'ls -l /system/quenfs'
    look 'get /system/bootCmdLine /system/bootFsUUID'
    look 'typeget /system/quenfs/ramdisks/<ramdisk>/memUsageLimit'
    look 'set /system/quenfs/ramdisks/configstore/memUsageLimit 80 high'
    look 'set /system/quenfs/ramdisks/configstore/memUsageLimit 80 95'
    look 'get /system/quenfs/ramdisks'
    printf '\n%s$ zelsh --format raw%s\n' "$bold" "$plain"
    "$shell" --root "$root" --format raw -c 'get /system/quenfs/ramdisks'
    printf '\n%s$ zelsh --format python%s\n' "$bold" "$plain"
    "$shell" --root "$root" --format python -c 'get /system/quenfs/ramdisks'
}

removed_or_kept() {
    for path in "$@"; do
        if [ -e "$root$path" ]; then
            printf 'kept     %s\n' "$path"
        else
            printf 'removed  %s\n' "$path"
        fi
    done
}

story() {
    tell "A hypervisor host and its configuration store, in a throwaway root. Every command below is run with" \
        "--root on that folder; all paths are the host's own. Rows that came are shown with +, rows that went" \
        "with -, a changed row with both."
    fresh_host
    first_boot
    ordinary_boot
    desired_documents
    desired_boot
    damaged_backup
    software_upgrade
    bad_delivery
    kernel_shell
}

if [ ! -x "$program" ] || [ ! -x "$shell" ] || [ ! -f "$module" ]; then
    echo "demo.sh: $program, $shell or $module is missing; build first (make build)" >&2
    exit 1
fi
cd "$sources"
case $mode in
show) story ;;
update) story >"$golden" ;;
check)
    story >"$scratch/story"
    diff -u "$golden" "$scratch/story"
    ;;
esac
