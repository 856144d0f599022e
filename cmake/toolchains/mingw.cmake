# SPDX-License-Identifier: AGPL-3.0-or-later
# Windows, compiled by Debian's mingw-w64 and run by Wine, for the rooms without JUCE, which itself has no MinGW. Included with
# CMAKE_SYSTEM_PROCESSOR set.
set (CMAKE_SYSTEM_NAME Windows)
set (CMAKE_C_COMPILER ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-gcc-posix)
set (CMAKE_CXX_COMPILER ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32-g++-posix)

# GCC 12 trusts registers that its own copy of an inline function leaves alone. Here the linker may take another file's copy, which
# does not.
set (CMAKE_CXX_FLAGS_INIT -fno-ipa-ra)
set (CMAKE_EXE_LINKER_FLAGS_INIT -static)
set (CMAKE_CROSSCOMPILING_EMULATOR wine)
set (CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
