# SPDX-License-Identifier: AGPL-3.0-or-later
# 64-bit ARM, compiled on another Debian machine: with Debian's cross compiler, and with the arm64 packages of the libraries beside
# the machine's own. scripts/test-arm64 has them in a root of their own.
set (CMAKE_SYSTEM_NAME Linux)
set (CMAKE_SYSTEM_PROCESSOR aarch64)
set (CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set (CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# The build runs what it has made: the helper that describes the module, and the host that makes the presets.
set (CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static)

# pkg-config describes the libraries of one architecture. What both architectures share lies in the second folder.
set (ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
