# SPDX-License-Identifier: Apache-2.0
# libswitchcfg: C++ without the C++ run-time. A C daemon that links it loads libc and zlib, nothing else.

find_package(ZLIB REQUIRED)

set_target_properties(switchcfg PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/libswitchcfg.map)
target_link_libraries(switchcfg PRIVATE $<BUILD_INTERFACE:switchcfg-settings> PUBLIC switchcfg-headers)
target_compile_options(switchcfg PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>
    -fno-semantic-interposition
    -fasynchronous-unwind-tables -ffunction-sections -fdata-sections
    $<$<BOOL:${SWITCHCFG_DEBUG_INFO}>:-g>)
target_link_options(switchcfg PRIVATE
    -Wl,--no-undefined -Wl,--gc-sections -Wl,--as-needed
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/libswitchcfg.map)
if(SWITCHCFG_COVERAGE)
    target_compile_options(switchcfg PRIVATE --coverage -fprofile-update=atomic -O1)
    target_link_options(switchcfg PRIVATE --coverage)
endif()
if(NOT SWITCHCFG_SANITIZE AND NOT SWITCHCFG_COVERAGE)
    # Keeps libstdc++ out even by accident: a reference to it fails the link.
    target_link_options(switchcfg PRIVATE -nodefaultlibs)
    target_link_libraries(switchcfg PRIVATE ZLIB::ZLIB c gcc)
else()
    target_link_libraries(switchcfg PRIVATE ZLIB::ZLIB)
endif()
