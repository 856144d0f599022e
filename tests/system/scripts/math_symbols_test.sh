#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# The sound takes no function of the C library's mathematics but exact ones: any other may differ in its last bit from machine to
# machine. Read from the symbols that the objects of the sound need.
# Usage: math_symbols_test.sh <library or object>...
set -euo pipefail

# What math.h declares, without the exact ones: floor, ceil, trunc, rint, round and their like, abs, sqrt, fmod, remainder, frexp,
# ldexp, modf, copysign, nextafter, fmin, fmax, fdim. Each for double, float (f) and long double (l); by compilers also with
# __ in front and _finite behind.
inexact='sin|cos|tan|sincos|asin|acos|atan|atan2|sinh|cosh|tanh|asinh|acosh|atanh|exp|exp2|exp10|expm1|log|log2|log10|log1p|pow|cbrt|hypot|erf|erfc|lgamma|tgamma|fma'

[ $# -gt 0 ] || { echo 'FAILED: no objects to read'; exit 1; }

symbols=$(nm --undefined-only --print-file-name "$@")
[ "$(wc -l <<<"$symbols")" -gt 10 ] || { echo 'FAILED: these objects need hardly a symbol, so they are not those of the sound'; exit 1; }

if found=$(grep -E " U (__)?($inexact)[fl]?(_finite)?(@.*)?$" <<<"$symbols")
then
    printf '%s\n' "$found"
    echo 'FAILED: the objects above take these functions from the C library; source/dsp/math has them'
    exit 1
fi

echo "no inexact function in $# objects"
