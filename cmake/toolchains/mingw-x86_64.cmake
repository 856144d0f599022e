# SPDX-License-Identifier: AGPL-3.0-or-later
# Windows, 64 bit.
set (CMAKE_SYSTEM_PROCESSOR x86_64)
include (${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
