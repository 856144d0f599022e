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
readelf --wide --relocs "$library" >"$work/relocations"

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

# Code that looks for its block at run time has an entry for it. libjpeg is linked as the system brings it and has one, for its
# choice of instructions; that code never runs, as no JPEG file is read.
onlyLibjpegLooksForItsBlock() { [ "$(grep -c DTPMOD "$work/relocations")" -le 1 ]; }

fitsIntoFreeBlocks() { [ "$(threadBlockSize)" -le 256 ]; }
stackIsNotExecutable() { grep -E '^ *GNU_STACK ' "$work/headers" | grep -qv 'RWE'; }

outputs=("$work/exported")
check 'it exports the entry points and nothing else' exports GetPluginFactory ModuleEntry ModuleExit

outputs=("$work/relocations")
check 'no code of its own looks for the thread-local block at run time' onlyLibjpegLooksForItsBlock

outputs=("$work/imported")
check 'it is compiled with the stack protector' imports __stack_chk_fail

if [ "$fortified" = 1 ]
then
    check 'it is compiled with fortified functions' imports '__(mem|str|stp|v?sn?printf|read|poll)[a-z]*_chk'
fi

outputs=("$work/dynamic")
check 'its functions are looked up while it is opened' isMarked 'FLAGS.*(BIND_NOW|NOW)'
check 'its thread-local block is made with each thread' isMarked 'FLAGS.*STATIC_TLS'
check 'it stays in memory when it is closed' isMarked 'FLAGS_1.*NODELETE'
check 'no place of its code is written to' never isMarked 'TEXTREL'

outputs=("$work/headers")
check 'its tables are read-only from then on' hasSegment GNU_RELRO
check 'its stack is not executable' stackIsNotExecutable
check 'its thread-local block is small' fitsIntoFreeBlocks

sumUp
