# SPDX-License-Identifier: Apache-2.0
# libswitchcfg-equipment: the equipment table for programs that read it in place, and nothing else. No code, so it needs
# no other library, nor what the compiler starts and ends an object with.

set_target_properties(switchcfg-equipment PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    EXPORT_NAME equipment
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/libswitchcfg-equipment.map)
target_link_libraries(switchcfg-equipment PRIVATE $<BUILD_INTERFACE:switchcfg-settings> PUBLIC switchcfg-headers)
target_compile_options(switchcfg-equipment PRIVATE -fno-exceptions -fno-rtti $<$<BOOL:${SWITCHCFG_DEBUG_INFO}>:-g>)
target_link_options(switchcfg-equipment PRIVATE -Wl,-z,noseparate-code
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/libswitchcfg-equipment.map)
if(NOT SWITCHCFG_SANITIZE)
    target_link_options(switchcfg-equipment PRIVATE -nostdlib)
endif()

target_link_libraries(switchcfg INTERFACE "$<LINK_LIBRARY:switchcfg_where_named,switchcfg::equipment>")
