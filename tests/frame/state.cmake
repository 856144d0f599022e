# SPDX-License-Identifier: AGPL-3.0-or-later
# The settings block and the program slots.

set (stateTests
    HostPathTests.cpp
    ProgramsTests.cpp
    SettingsGuardTests.cpp
    SettingsStateDamageTests.cpp
    SettingsStateLoadTests.cpp
    SettingsStateSaveTests.cpp)

target_sources (plugin_tests PRIVATE ${stateTests})
