# SPDX-License-Identifier: AGPL-3.0-or-later
# Windows, 32 bit.
set (CMAKE_SYSTEM_PROCESSOR i686)
include (${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)

# The arithmetic of 64 bits, not the one with 80 bits in between. SSE2 wants sixteen bytes, and Windows aligns the stack to four of
# them, and what new gives to eight, though GCC believes that it is sixteen.
string (APPEND CMAKE_CXX_FLAGS_INIT " -msse2 -mfpmath=sse -mstackrealign -faligned-new=8")
