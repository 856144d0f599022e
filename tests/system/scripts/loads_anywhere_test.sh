#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# What the module and kestrin-host need from the system that loads them, read with binutils. Either one must load on every
# distribution that is not older than the named versions, and nothing of where it was built may be in it.
#
#   loads_anywhere_test.sh <module's library> <kestrin-host> <source folder> [version of symbols...]
#
# A version is, for example, GLIBC_2.35: the newest one of its kind that may be asked for. Without any they are not looked at.
set -euo pipefail
# shellcheck source-path=SCRIPTDIR
. "$(dirname "$0")/checks.sh"

source=$3
newestAllowed=("${@:4}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Their names are the same on every distribution, those of other libraries are not: libjpeg.so.62 here is libjpeg.so.8 there.
sameEverywhere='ld-linux[-a-z0-9_]*\.so\.[0-9]|libc\.so\.6|libm\.so\.6|libgcc_s\.so\.1|libstdc\+\+\.so\.6'
sameEverywhere+='|libsndfile\.so\.1|libfreetype\.so\.6|libfontconfig\.so\.1|libpng16\.so\.16|libz\.so\.1|libX11\.so\.6'

needsOnlyTheSame() { ! sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' "$work/dynamic" | grep -vxE "$allowed" >"$work/others"; }

isNotNewer() # version of symbols
{
    local kind=${1%_*} newest
    newest=$(sed -n "s/.*Name: \(${kind}_[0-9.]*\) .*/\1/p" "$work/versions" | sort -uV | tail -n 1)
    [ -n "$newest" ] && [ "$(printf '%s\n' "$newest" "$1" | sort -V | tail -n 1)" = "$1" ]
}

hasSection() { grep -q "$1" "$work/sections"; }

for file in "$1" "$2"
do
    case=$(basename "$file")
    allowed=$sameEverywhere
    [ "$file" = "$1" ] || allowed+='|libasound\.so\.2' # it plays; the module does not
    readelf --wide --dynamic "$file" >"$work/dynamic"
    readelf --wide --version-info "$file" >"$work/versions"
    readelf --wide --dyn-syms "$file" >"$work/symbols"
    readelf --wide --sections "$file" >"$work/sections"

    outputs=("$work/others")
    check 'it needs no library whose name differs between distributions' needsOnlyTheSame

    outputs=("$work/versions")
    for version in "${newestAllowed[@]}"
    do
        check "it runs on every system that has $version" isNotNewer "$version"
    done

    outputs=()
    check 'it has lines for a debugger' hasSection '\.debug_line'
    check 'it does not name the folder in which it was built' never grep -qF "$source" "$file"

    outputs=("$work/dynamic")
    check 'its functions are looked up before it runs' grep -qE 'FLAGS.*(BIND_NOW|NOW)' "$work/dynamic"
    check 'it is compiled with the stack protector' grep -q '__stack_chk_fail@' "$work/symbols"
    check 'it is compiled with fortified functions' grep -qE ' __(mem|str|stp|v?sn?printf|read|poll)[a-z]*_chk@' "$work/symbols"
done

sumUp
