# SPDX-License-Identifier: Apache-2.0
# libswitchcfg-funclist: ordinary C++, with the run-time that libswitchcfg does without.

set_target_properties(switchcfg-funclist PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    EXPORT_NAME funclist
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/libswitchcfg-funclist.map)
target_link_libraries(switchcfg-funclist
    PRIVATE $<BUILD_INTERFACE:switchcfg-settings> $<BUILD_INTERFACE:switchcfg-zeromq> Threads::Threads
    PUBLIC switchcfg protobuf::libprotobuf)
target_compile_options(switchcfg-funclist PRIVATE -fno-semantic-interposition -ffunction-sections -fdata-sections
    $<$<BOOL:${SWITCHCFG_DEBUG_INFO}>:-g>)
target_link_options(switchcfg-funclist PRIVATE
    -Wl,--no-undefined -Wl,--gc-sections -Wl,--as-needed
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/libswitchcfg-funclist.map)
if(SWITCHCFG_COVERAGE)
    target_compile_options(switchcfg-funclist PRIVATE --coverage -fprofile-update=atomic -O1)
    target_link_options(switchcfg-funclist PRIVATE --coverage)
endif()
