# SPDX-License-Identifier: AGPL-3.0-or-later
# What is delivered and where it lies, for "cmake --install" and scripts/package: the component "module", which hosts load, and
# the component "host", which people call.

install (DIRECTORY "${kestrinModule}" DESTINATION lib/vst3 COMPONENT module)
install (DIRECTORY ${kestrinPresetFolder}/ DESTINATION "share/vst3/presets/Kestrin/Kestrin Tamsile Filter" COMPONENT module)

install (PROGRAMS $<TARGET_FILE:kestrin-host> DESTINATION bin COMPONENT host)
install (FILES packaging/kestrin-host.1 DESTINATION share/man/man1 COMPONENT host)
install (FILES packaging/kestrin-host.bash-completion
    DESTINATION share/bash-completion/completions RENAME kestrin-host COMPONENT host)
