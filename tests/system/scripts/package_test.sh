#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Makes the packages of a build, installs them into an empty root and an empty home, uses what is there, and removes it.
#
#   package_test.sh <path of scripts/package> <build folder> <kestrin-host> <version>
set -uo pipefail

script=$1
build=$2
host=$3
version=$4
scratch=$(mktemp -d "${TMPDIR:-/tmp}/package test XXXXXX") # the blanks are part of every test
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"
bundle='Kestrin Tamsile Filter.vst3'
name=kestrin-tamsile-filter
packaging=$(cd "$(dirname "$script")/../packaging" && pwd)
export PATH="$PATH:/usr/sbin:/sbin" # dpkg looks there for its helpers

outputs=("$scratch/out")

run() { "$@" >"$scratch/out" 2>&1; }
says() { grep -qF -- "$1" "$scratch/out"; }
field() { dpkg-deb --field "$deb" "$1"; }
one() { [ "$#" = 1 ] && [ -f "$1" ]; }

# dpkg wants to be root, and does not look for scripts of the machine inside the new root.
inRoot()
{
    local asRoot=()
    [ "$(id -u)" = 0 ] || asRoot=(fakeroot)
    # The root is empty: it has none of the libraries that the package asks for.
    run "${asRoot[@]}" dpkg --root="$root" --log=/dev/null --force-depends --force-script-chrootless "$@"
}

filesOf() { (cd "$1" && find . -type f | sort); }

# Twice: later, elsewhere, with other permissions and another time zone.
(umask 077; TZ=Asia/Tokyo TMPDIR=$scratch "$script" "$build" "$scratch/made again" >"$scratch/again" 2>&1)
run "$script" "$build" "$scratch/made"
check 'the packages are made' test $? = 0

deb=$(find "$scratch/made" -name "${name}_$version-1_*.deb")
hostDeb=$(find "$scratch/made" -name "kestrin-host_$version-1_*.deb")
archive=$(find "$scratch/made" -name "$name-$version-linux-*.tar.gz")
check 'there is a Debian package of the module' one "$deb"
check 'there is a Debian package of kestrin-host' one "$hostDeb"
check 'there is a package of symbols for either' \
    test "$(find "$scratch/made" -name "$name-dbgsym_*.deb" -o -name 'kestrin-host-dbgsym_*.deb' | wc -l)" = 2
check 'there is one archive' one "$archive"
[ "$failures" = 0 ] || exit 1 # all that follows would fail as well, and say less

outputs=("$scratch/again")
check 'making them again gives the same bytes' diff -r "$scratch/made" "$scratch/made again"
outputs=("$scratch/out")

check 'the list of changes begins with this version' test "$(sed -n 's/^## //p' "$packaging/../CHANGELOG.md" | head -n 1)" = "$version"

#---- the Debian packages

check 'the package has its name' test "$(field Package)" = "$name"
check 'it has its version' test "$(field Version)" = "$version-1"
check 'it has its address' test "$(field Homepage)" = https://kestrin.example
check 'its maintainer has one, too' test "$(field Maintainer)" = 'Kestrin <kestrin@kestrin.example>'
field Depends >"$scratch/out"
check 'the libraries it is linked to are found' says 'libfreetype6 (>='
check 'the libraries that the window opens are named' says libxcursor1
check 'the library that is linked statically is not asked for' never says libjpeg

dpkg-deb --contents "$deb" >"$scratch/out"
check 'everything bears the same time' test "$(awk '{ print $4, $5 }' "$scratch/out" | sort -u | wc -l)" = 1
check 'everything belongs to root' test -z "$(awk '$2 != "root/root"' "$scratch/out")"
check 'everybody can read everything' test -z "$(awk '$1 !~ /^(drwxr-xr-x|-rw-r--r--|-rwxr-xr-x)$/' "$scratch/out")"

root=$scratch/root
mkdir -p "$root"/var/lib/dpkg/{info,updates}
touch "$root"/var/lib/dpkg/{status,available}
inRoot --install "$deb" "$hostDeb"
check 'both packages install' test $? = 0

module="$root/usr/lib/vst3/$bundle"
presets="$root/usr/share/vst3/presets/Kestrin/Kestrin Tamsile Filter"
check 'the module loads from there' run "$host" parameters --plugin "$module"
check 'and has its parameters' says lp_freq
check 'all presets are there' test "$(find "$presets" -name '*.vstpreset' | wc -l)" = "$(find "$build/presets" -type f | wc -l)"
check 'a preset loads from there' run "$host" state --plugin "$module" --show "$presets/Telephone.vstpreset"
check 'and holds settings' says 'lp_freq="'
check 'nothing lies anywhere else' test -z "$(filesOf "$root" | grep -v -e '^./var/lib/dpkg/' -e "^./usr/lib/vst3/$bundle/" \
    -e '^./usr/share/vst3/presets/Kestrin/Kestrin Tamsile Filter/' -e "^./usr/share/\(doc\|doc-base\|lintian/overrides\)/$name" \
    -e '^./usr/share/\(doc\|lintian/overrides\)/kestrin-host' -e '^./usr/share/metainfo/example.kestrin.tamsilefilter.metainfo.xml$' \
    -e '^./usr/bin/kestrin-host$' -e '^./usr/share/man/man1/kestrin-host.1.gz$' \
    -e '^./usr/share/bash-completion/completions/kestrin-host$')"

isStripped() { readelf --wide --sections "$1" >"$scratch/sections" && ! grep -qE '\.(symtab|debug_)' "$scratch/sections"; }
check 'the module is stripped' isStripped "$(find "$module" -name '*.so')"
check 'kestrin-host is stripped' isStripped "$root/usr/bin/kestrin-host"
check 'the installed kestrin-host renders' run "$root/usr/bin/kestrin-host" identity --plugin "$module"

notices="$root/usr/share/doc/$name/copyright"
check "the licence's text is in the notices" grep -q 'Remote Network Interaction' "$notices"
check 'what is linked in is in the notices' test \
    "$(grep -cE '^Files: (juce/\*|.*VST3_SDK/\*|.*harfbuzz/\*|.*sheenbidi/\*|libjpeg-turbo/\*|CLI11/\*)' "$notices")" = 6

manual="$root/usr/share/doc/$name/manual"
check 'the manual is a page' grep -q '<h2 id="the-two-filters">' "$manual.html"
check 'with all its pictures inside' test "$(grep -o 'src="data:image/png;base64,iVBOR' "$manual.html" | wc -l)" \
    = "$(grep -o '(pictures/' "$packaging/../docs/manual.md" | wc -l)"
check 'it asks for no other file' never grep -qE '(src|href)="[^#d]' "$manual.html"
check 'the manual is a PDF, too' test "$(head -c 5 "$manual.pdf")" = '%PDF-'
check 'with all its pictures inside' test "$(grep -ac '/Subtype /Image' "$manual.pdf")" \
    = "$(grep -o '(pictures/' "$packaging/../docs/manual.md" | wc -l)"

#---- the words about kestrin-host: those of the program itself count

optionsOf() { grep -oE -- '--[a-z][a-z-]+' | sort -u; }
helpOf() { "$host" "$1" --help | sed -n 's/^  \(-h,\)\?\(--[a-z-]*\).*/\2/p' | sort -u; }

# What the page says of one command, and what it says of all.
pageOf()
{
    zcat "$root/usr/share/man/man1/kestrin-host.1.gz" | sed 's/\\-/-/g' \
        | awk -v name="$1" '/^\.S[SH]/ { inside = ($2 == name || ($2 == "COMMANDS")) } inside' | optionsOf
}

# The variables are those that bash's completion knows.
# shellcheck disable=SC2034,SC2317
completionOf() # command
(
    wanted=$1
    _init_completion() { cur=-; prev=$wanted; words=(kestrin-host "$wanted" -); cword=2; }
    # shellcheck source=/dev/null
    source "$root/usr/share/bash-completion/completions/kestrin-host"
    _kestrin_host
    printf '%s\n' "${COMPREPLY[@]}" | sort -u
)

for command in render play parameters identity state preset window
do
    check "the manual page has the options of $command" test "$(pageOf "$command")" = "$(helpOf "$command")"
    check "bash completes the options of $command" test "$(completionOf "$command")" = "$(helpOf "$command")"
done

LC_ALL=C.UTF-8 MANWIDTH=80 run man --warnings -l "$root/usr/share/man/man1/kestrin-host.1.gz"
check 'the manual page is laid out' says 'SETTINGS FILES'
check 'without a warning' never says warning

inRoot --purge "$name" kestrin-host
check 'they are removed' test $? = 0
find "$root" -mindepth 1 -maxdepth 1 >"$scratch/out"
check 'and leave only the database of dpkg' test "$(cat "$scratch/out")" = "$root/var"

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
check 'the kestrin-host beside it runs' run "$folder/kestrin-host" identity --plugin "$home/.vst3/$bundle"
check 'the manual is there' test -s "$folder/manual.html"
check 'and can be printed' test -s "$folder/manual.pdf"
check 'the note names the oldest C library' grep -qE 'glibc 2\.[0-9]+ and GLIBCXX_3' "$folder/INSTALL"
check 'the note is filled in' never grep -q '@' "$folder/INSTALL"
steps 'ldd' >"$scratch/out" 2>&1
check 'no library is missing here' never test -s "$scratch/out"
steps 'rm' >"$scratch/out" 2>&1
check 'the way out succeeds' test $? = 0
check 'and leaves no file' test -z "$(filesOf "$home")"

sumUp
