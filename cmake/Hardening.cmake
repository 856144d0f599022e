# SPDX-License-Identifier: AGPL-3.0-or-later
# How the module is compiled so that it is safe to have in a host.

# A module's thread-local block is otherwise made by the loader on each thread at its first use there, with memory: on an audio
# thread. Static, it is there from the beginning of every thread. It must be small for that, as the loader keeps about 1.6 kB
# free for the blocks of all modules that are opened later.
set (kestrinModuleCompileOptions "")

if (CMAKE_SYSTEM_NAME STREQUAL "Linux")
    list (APPEND kestrinModuleCompileOptions -ftls-model=initial-exec)
endif()

# For each target whose objects are linked into the module.
function (kestrin_module_objects)
    foreach (target IN LISTS ARGN)
        target_compile_options (${target} PRIVATE ${kestrinModuleCompileOptions})
    endforeach()
endfunction()
