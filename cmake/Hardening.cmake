# SPDX-License-Identifier: AGPL-3.0-or-later
# How what is delivered, the module and kestrin-host, is compiled and linked: with the compiler's and the loader's guards, with
# lines for a debugger, and with the same bytes wherever the source lies. The module besides so that it is safe to have in a
# host: with memory of its threads that is there from the beginning, and with no symbols but the entry points.

set (kestrinDeliveredCompileOptions "")
set (kestrinDeliveredLinkOptions "")

# What lies in this folder is named, in debug information, as if it lay in that one. Of two that fit, the later one counts.
macro (kestrin_map_paths folder name)
    if (CMAKE_SYSTEM_NAME STREQUAL "Linux")
        list (APPEND kestrinDeliveredCompileOptions $<$<CONFIG:Release>:-ffile-prefix-map=${folder}=${name}>)
    endif()
endmacro()

kestrin_map_paths (${PROJECT_SOURCE_DIR} kestrin)
kestrin_map_paths (${PROJECT_BINARY_DIR} build)

if (CMAKE_SYSTEM_NAME STREQUAL "Linux")
    # Copies into buffers of known size are checked. This takes an optimising compiler, and is the sanitizers' own business.
    if (NOT KESTRIN_SANITIZE)
        list (APPEND kestrinDeliveredCompileOptions
            $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
            $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
    endif()

    list (APPEND kestrinDeliveredCompileOptions -fstack-protector-strong)

    # All functions are looked up while the module is opened or the program started, so that none is on the audio thread, and
    # their table is read-only from then on.
    list (APPEND kestrinDeliveredLinkOptions LINKER:-z,relro LINKER:-z,now)

    # Functions and lines, which is what a backtrace shows; "make package" puts them into packages of their own. Variables
    # would take several times the space.
    list (APPEND kestrinDeliveredCompileOptions $<$<CONFIG:Release>:-g1>)
endif()

# A module's thread-local block is otherwise made by the loader on each thread at its first use there, with memory: on an audio
# thread. Static, it is there from the beginning of every thread. It must be small for that, as the loader keeps about 1.6 kB
# free for the blocks of all modules that are opened later.
set (kestrinModuleCompileOptions "")
set (kestrinModuleLinkOptions "")

if (CMAKE_SYSTEM_NAME STREQUAL "Linux")
    list (APPEND kestrinModuleCompileOptions -ftls-model=initial-exec)

    # A host that closes the module leaves it in memory: the loader cannot always take a static block back, and a module that is
    # opened and closed a hundred times would use up what is free.
    list (APPEND kestrinModuleLinkOptions
        LINKER:-z,nodelete
        LINKER:--version-script=${CMAKE_CURRENT_LIST_DIR}/ExportedSymbols.map)
    set (kestrinModuleLinkDepends ${CMAKE_CURRENT_LIST_DIR}/ExportedSymbols.map)
elseif (APPLE)
    # Untried.
    foreach (symbol IN ITEMS GetPluginFactory bundleEntry bundleExit)
        list (APPEND kestrinModuleLinkOptions LINKER:-exported_symbol,_${symbol})
    endforeach()
endif()

# For each target whose objects are linked into the module or kestrin-host.
function (kestrin_delivered_objects)
    foreach (target IN LISTS ARGN)
        target_compile_options (${target} PRIVATE ${kestrinDeliveredCompileOptions})
    endforeach()
endfunction()

# For each target whose objects are linked into the module.
function (kestrin_module_objects)
    kestrin_delivered_objects (${ARGN})

    foreach (target IN LISTS ARGN)
        target_compile_options (${target} PRIVATE ${kestrinModuleCompileOptions})
    endforeach()
endfunction()

# For the module itself. (Windows exports what the sources mark, which is no more than the entry points.)
function (kestrin_module target)
    target_link_options (${target} PRIVATE ${kestrinDeliveredLinkOptions} ${kestrinModuleLinkOptions})
    set_property (TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${kestrinModuleLinkDepends})
endfunction()

# For a program that is delivered.
function (kestrin_program target)
    kestrin_delivered_objects (${target})
    target_link_options (${target} PRIVATE ${kestrinDeliveredLinkOptions})
endfunction()
