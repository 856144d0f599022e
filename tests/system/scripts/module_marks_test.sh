#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# What the built module shows to the loader, read with binutils: its symbols, and the marks of how it was compiled and linked.
# Usage: module_marks_test.sh <shared library inside the bundle> <fortified: 1 or 0>
set -euo pipefail
# shellcheck source-path=SCRIPTDIR
. "$(dirname "$0")/checks.sh"

library=$1
fortified=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

nm --dynamic --defined-only "$library" >"$work/exported"
nm --dynamic --undefined-only "$library" >"$work/imported"
readelf --wide --dynamic "$library" >"$work/dynamic"
readelf --wide --program-headers "$library" >"$work/headers"

exports()
{
    [ "$(awk '{ print $NF }' "$work/exported" | sort | tr '\n' ' ')" = "$* " ]
}

imports()    { grep -qE " $1(@|\$)" "$work/imported"; }
isMarked()   { grep -qE "$1" "$work/dynamic"; }
hasSegment() { grep -qE "^ *$1 " "$work/headers"; }

# The size in memory of the block that each thread has for the module.
threadBlockSize()
{
    local size
    size=$(awk '$1 == "TLS" { print $6 }' "$work/headers")
    echo $((${size:-0}))
}

fitsIntoFreeBlocks() { [ "$(threadBlockSize)" -le 256 ]; }
stackIsNotExecutable() { grep -E '^ *GNU_STACK ' "$work/headers" | grep -qv 'RWE'; }

outputs=("$work/exported")
check 'it exports the entry points and nothing else' exports GetPluginFactory ModuleEntry ModuleExit

outputs=("$work/imported")
check 'it asks for no thread-local block on the way' never imports __tls_get_addr
check 'it is compiled with the stack protector' imports __stack_chk_fail

if [ "$fortified" = 1 ]
then
    check 'it is compiled with fortified functions' imports '__(mem|str|stp|v?sn?printf|read|poll)[a-z]*_chk'
fi

outputs=("$work/dynamic")
check 'its functions are looked up while it is opened' isMarked 'FLAGS.*(BIND_NOW|NOW)'
check 'it stays in memory when it is closed' isMarked 'FLAGS_1.*NODELETE'
check 'no place of its code is written to' never isMarked 'TEXTREL'

outputs=("$work/headers")
check 'its tables are read-only from then on' hasSegment GNU_RELRO
check 'its stack is not executable' stackIsNotExecutable
check 'its thread-local block is small' fitsIntoFreeBlocks

sumUp
