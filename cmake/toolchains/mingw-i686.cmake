# SPDX-License-Identifier: AGPL-3.0-or-later
# Windows, compiled by Debian's mingw-w64 and run by Wine, for the rooms without JUCE, which itself has no MinGW.
set (CMAKE_SYSTEM_NAME Windows)
set (CMAKE_SYSTEM_PROCESSOR i686)
set (CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set (CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set (CMAKE_EXE_LINKER_FLAGS_INIT -static)
set (CMAKE_CROSSCOMPILING_EMULATOR wine)
set (CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)

# The arithmetic of 64 bits, not the one with 80 bits in between. Windows aligns the stack to four bytes, and SSE2 wants sixteen.
set (CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")
