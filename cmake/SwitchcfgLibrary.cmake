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
# Half of the library builds texts, asks daemons and reads files: there size counts. What answers from memory (equip, core,
# error) is built for speed, but not with gcc's -O3, which makes it half as large again and no faster.
target_compile_options(switchcfg PRIVATE $<$<CONFIG:Release>:-O2>)
get_target_property(sources switchcfg SOURCES)
list(FILTER sources INCLUDE REGEX "/(bootenv|features|log|util)/[^/]*$")
set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS $<$<NOT:$<CONFIG:Debug>>:-Os>)
# Calls inside the library stay inside, except for what a program may define itself (host-provided.list). Exported data
# is reached through the GOT all the same, since a program that is not position independent has its own copy.
target_link_options(switchcfg PRIVATE
    -Wl,--no-undefined -Wl,--gc-sections -Wl,--as-needed
    -Wl,--dynamic-list=${PROJECT_SOURCE_DIR}/cmake/host-provided.list -Wl,--dynamic-list-data
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/libswitchcfg.map)
if(NOT SWITCHCFG_SANITIZE)
    # Keeps libstdc++ out even by accident: a reference to it fails the link.
    target_link_options(switchcfg PRIVATE -nodefaultlibs)
    target_link_libraries(switchcfg PRIVATE ZLIB::ZLIB c gcc)
else()
    target_link_libraries(switchcfg PRIVATE ZLIB::ZLIB)
endif()
