# SPDX-License-Identifier: AGPL-3.0-or-later
# What every compiler is told: the language, the bits of floating point, the warnings of our own code.

set (CMAKE_CXX_STANDARD 20)
set (CMAKE_CXX_STANDARD_REQUIRED ON)
set (CMAKE_CXX_EXTENSIONS OFF)
set (CMAKE_POSITION_INDEPENDENT_CODE ON)
set (CMAKE_C_VISIBILITY_PRESET hidden)
set (CMAKE_CXX_VISIBILITY_PRESET hidden)
set (CMAKE_VISIBILITY_INLINES_HIDDEN ON)

# A fused multiply-add rounds once where the formulas round twice: it would change some 3 % of all output samples.
if (MSVC)
    set (kestrinExactFloatingPoint /fp:precise)
else()
    set (kestrinExactFloatingPoint -ffp-contract=off)
endif()

# GCC 12 loses a rounding to float on the way from double to double where it makes vectors of single operations.
if (CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list (APPEND kestrinExactFloatingPoint -fno-tree-slp-vectorize)
endif()

add_compile_options (${kestrinExactFloatingPoint})

if (KESTRIN_SANITIZE)
    add_compile_options (-fsanitize=${KESTRIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options (-fsanitize=${KESTRIN_SANITIZE})
endif()

# A fuzzer steers by the branches that its input has reached, so all code reports them. Only the programs get its main.
if (KESTRIN_BUILD_FUZZERS)
    add_compile_options (-fsanitize=fuzzer-no-link)
endif()

# Only our own sources count the branches that they take, and they are not optimised, so that each line has its own code. The
# counts are written when a process ends, and threads count together.
if (KESTRIN_COVERAGE)
    set (kestrinCoverageOptions --coverage -fprofile-update=atomic -O0 -U_FORTIFY_SOURCE)
    add_link_options (--coverage)
endif()

# Turns warnings into errors for the listed sources only: the targets compile JUCE's modules too, which have warnings.
function (kestrin_strict_warnings)
    if (MSVC)
        # Untried: until the code has been built with this compiler, its warnings are shown and are not errors.
        set (flags /W4)
    else()
        set (flags -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wdouble-promotion -Werror)

        # GCC 12 sees overlapping copies in "literal" + std::string where there are none.
        if (CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
            list (APPEND flags -Wno-restrict)
        endif()
    endif()

    set_property (SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS ${flags} ${kestrinCoverageOptions})
endfunction()
