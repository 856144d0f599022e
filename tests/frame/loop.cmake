# SPDX-License-Identifier: AGPL-3.0-or-later
# The sample loop, and what the plug-in says and asks at the host's boundary.

set (loopTests
    FrameLoopTests.cpp
    HostBoundaryTests.cpp
    OversamplingTests.cpp)
list (TRANSFORM loopTests PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")

target_sources (plugin_tests PRIVATE ${loopTests})
kestrin_strict_warnings (${loopTests} TARGET_DIRECTORY plugin_tests)
