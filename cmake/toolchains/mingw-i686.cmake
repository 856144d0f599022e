# SPDX-License-Identifier: AGPL-3.0-or-later
# Windows, 32 bit.
set (CMAKE_SYSTEM_PROCESSOR i686)
include (${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)

# The arithmetic of 64 bits, not the one with 80 bits in between. Windows aligns the stack to four bytes, and SSE2 wants sixteen.
string (APPEND CMAKE_CXX_FLAGS_INIT " -msse2 -mfpmath=sse -mstackrealign")
