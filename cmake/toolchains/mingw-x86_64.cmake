# SPDX-License-Identifier: AGPL-3.0-or-later
# Windows, compiled by Debian's mingw-w64 and run by Wine, for the rooms without JUCE, which itself has no MinGW.
set (CMAKE_SYSTEM_NAME Windows)
set (CMAKE_SYSTEM_PROCESSOR x86_64)
set (CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set (CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set (CMAKE_EXE_LINKER_FLAGS_INIT -static)
set (CMAKE_CROSSCOMPILING_EMULATOR wine)
set (CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
