# SPDX-License-Identifier: Apache-2.0
# libswitchcfg: C++ without the C++ run-time. A C daemon that links it loads libc and zlib, nothing else.

find_package(ZLIB REQUIRED)

set_target_properties(switchcfg PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/libswitchcfg.map;${PROJECT_SOURCE_DIR}/cmake/host-provided.list")
target_link_libraries(switchcfg PRIVATE $<BUILD_INTERFACE:switchcfg-settings> PUBLIC switchcfg-headers)
target_compile_options(switchcfg PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>
    -fno-semantic-interposition
    -fasynchronous-unwind-tables -ffunction-sections -fdata-sections
    $<$<BOOL:${SWITCHCFG_DEBUG_INFO}>:-g>)
# A release is built for size: what answers from memory folds to a load or two all the same, because all of core/field.h is
# inlined. What searches tables for every packet or port is the exception. -fpic: the target has a short way to a
# table of addresses below 64 KiB. docs/footprint.md has the figures.
set_source_files_properties(core/status_lookup.cpp equip/port_conversion.cpp log/trap_queue.cpp PROPERTIES
    COMPILE_OPTIONS $<$<CONFIG:Release>:-O2>)
target_compile_options(switchcfg PRIVATE "$<$<CONFIG:Release>:-Os;-fpic>")
if(SWITCHCFG_LTO)
    set_target_properties(switchcfg PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
    target_link_options(switchcfg PRIVATE "$<$<CONFIG:Release>:-Os;-fpic>")
    # Else the compiler would take the library's own definition of what a program may define itself.
    set_source_files_properties(log/default_vxlog.cpp equip/chassis_constants.cpp core/debug_lines.cpp PROPERTIES COMPILE_OPTIONS -fno-lto)
endif()
# Calls inside the library stay inside, except for what a program may define itself (host-provided.list). Exported data
# is reached through the GOT all the same, since a program that is not position independent has its own copy.
# Two segments, as on the target: each more is a mapping and a page fault at the start of every program.
target_link_options(switchcfg PRIVATE -Wl,-z,noseparate-code
    -Wl,--no-undefined -Wl,--gc-sections -Wl,--as-needed
    -Wl,--dynamic-list=${PROJECT_SOURCE_DIR}/cmake/host-provided.list -Wl,--dynamic-list-data
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/libswitchcfg.map)
if(SWITCHCFG_COVERAGE)
    target_compile_options(switchcfg PRIVATE --coverage -fprofile-update=atomic -O1)
    target_link_options(switchcfg PRIVATE --coverage)
endif()
if(NOT SWITCHCFG_SANITIZE AND NOT SWITCHCFG_COVERAGE)
    # Keeps libstdc++ out even by accident: a reference to it fails the link. Nor is there what a compiler starts and ends
    # an object with: there are no destructors, and every program would look four names up for it and load a page.
    target_link_options(switchcfg PRIVATE -nostdlib)
    target_link_libraries(switchcfg PRIVATE ZLIB::ZLIB c gcc)
else()
    target_link_libraries(switchcfg PRIVATE ZLIB::ZLIB)
endif()
