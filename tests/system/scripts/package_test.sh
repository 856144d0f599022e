#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Makes the packages of a build, installs them into an empty root and an empty home, uses what is there, and removes it.
#
#   package_test.sh <path of scripts/package> <build folder> <kestrin-host>
set -uo pipefail

script=$1
build=$2
host=$3
scratch=$(mktemp -d "${TMPDIR:-/tmp}/package test XXXXXX") # the blanks are part of every test
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"
bundle='Kestrin Tamsile Filter.vst3'
name=kestrin-tamsile-filter
export PATH="$PATH:/usr/sbin:/sbin" # dpkg looks there for its helpers

outputs=("$scratch/out")

run() { "$@" >"$scratch/out" 2>&1; }
says() { grep -qF -- "$1" "$scratch/out"; }
field() { dpkg-deb --field "$deb" "$1"; }

# dpkg wants to be root, and does not look for scripts of the machine inside the new root.
inRoot()
{
    local asRoot=()
    [ "$(id -u)" = 0 ] || asRoot=(fakeroot)
    # The root is empty: it has none of the libraries that the package asks for.
    run "${asRoot[@]}" dpkg --root="$root" --log=/dev/null --force-depends --force-script-chrootless "$@"
}

filesOf() { (cd "$1" && find . -type f | sort); }

run "$script" "$build" "$scratch/made"
check 'the packages are made' test $? = 0
deb=$(find "$scratch/made" -name "${name}_1.0.0*.deb")
archive=$(find "$scratch/made" -name "$name-1.0.0-*.tar.gz")
check 'there is one Debian package' test -f "$deb"
check 'there is one archive' test -f "$archive"
[ "$failures" = 0 ] || exit 1 # all that follows would fail as well, and say less

#---- the Debian package

check 'it has its name' test "$(field Package)" = "$name"
check 'it has its version' test "$(field Version)" = 1.0.0
check 'it has its address' test "$(field Homepage)" = https://kestrin.example
field Depends >"$scratch/out"
check 'the libraries it is linked to are found' says 'libfreetype6 (>='
check 'the libraries that the window opens are named' says libxcursor1

dpkg-deb --contents "$deb" >"$scratch/out"
check 'everything belongs to root' test -z "$(awk '$2 != "root/root"' "$scratch/out")"
check 'everybody can read everything' test -z "$(awk '$1 !~ /^(drwxr-xr-x|-rw-r--r--|-rwxr-xr-x)$/' "$scratch/out")"

root=$scratch/root
mkdir -p "$root"/var/lib/dpkg/{info,updates}
touch "$root"/var/lib/dpkg/{status,available}
inRoot --install "$deb"
check 'it installs' test $? = 0

module="$root/usr/lib/vst3/$bundle"
presets="$root/usr/share/vst3/presets/Kestrin/Kestrin Tamsile Filter"
check 'the module loads from there' run "$host" parameters --plugin "$module"
check 'and has its parameters' says lp_freq
check 'all presets are there' test "$(find "$presets" -name '*.vstpreset' | wc -l)" = "$(find "$build/presets" -type f | wc -l)"
check 'a preset loads from there' run "$host" state --plugin "$module" --show "$presets/Telephone.vstpreset"
check 'and holds settings' says 'lp_freq="'
check 'nothing lies anywhere else' test -z "$(filesOf "$root" | grep -v -e '^./var/lib/dpkg/' -e "^./usr/lib/vst3/$bundle/" \
    -e '^./usr/share/vst3/presets/Kestrin/Kestrin Tamsile Filter/' -e "^./usr/share/doc/$name/copyright$")"

inRoot --purge "$name"
check 'it is removed' test $? = 0
find "$root" -mindepth 1 -maxdepth 1 >"$scratch/out"
check 'and leaves only the database of dpkg' test "$(cat "$scratch/out")" = "$root/var"

#---- the archive, used by the words of its note

home=$scratch/home
mkdir -p "$home"
run tar -xzf "$archive" -C "$scratch"
folder=$scratch/$(basename "$archive" .tar.gz)
check 'the archive unpacks into a folder of its name' test -f "$folder/INSTALL"

steps() # first word of the step
{
    sed -n "s/^    \($1 .*\)/\1/p" "$folder/INSTALL" | (cd "$folder" && HOME=$home bash -e)
}

steps '\(mkdir\|cp\)' >"$scratch/out" 2>&1
check 'the steps of the note succeed' test $? = 0
check 'the module loads from there, too' run "$host" parameters --plugin "$home/.vst3/$bundle"
check 'the presets lie where hosts look' test -f "$home/.vst3/presets/Kestrin/Kestrin Tamsile Filter/Telephone.vstpreset"
steps 'ldd' >"$scratch/out" 2>&1
check 'no library is missing here' never test -s "$scratch/out"
steps 'rm' >"$scratch/out" 2>&1
check 'the way out succeeds' test $? = 0
check 'and leaves no file' test -z "$(filesOf "$home")"

sumUp
