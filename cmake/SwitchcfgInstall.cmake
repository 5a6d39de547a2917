# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` lays down: objects, headers, the CMake package and the pkg-config files.

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/switchcfg)

install(TARGETS switchcfg switchcfg-headers EXPORT switchcfg-targets)
install(DIRECTORY include/switchcfg DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h"
    PATTERN "funclist*.h" EXCLUDE
    PATTERN "mpls_print.h" EXCLUDE)
install(EXPORT switchcfg-targets NAMESPACE switchcfg:: DESTINATION ${package_dir})

configure_package_config_file(cmake/switchcfgConfig.cmake.in ${PROJECT_BINARY_DIR}/switchcfgConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/switchcfgConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/switchcfgConfig.cmake
    ${PROJECT_BINARY_DIR}/switchcfgConfigVersion.cmake
    DESTINATION ${package_dir})

configure_file(cmake/switchcfg.pc.in ${PROJECT_BINARY_DIR}/switchcfg.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/switchcfg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(SWITCHCFG_BUILD_FUNCLIST)
    install(TARGETS switchcfg-funclist EXPORT switchcfg-funclist-targets)
    install(DIRECTORY include/switchcfg DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "funclist*.h" PATTERN "mpls_print.h")
    install(EXPORT switchcfg-funclist-targets NAMESPACE switchcfg:: DESTINATION ${package_dir})
    configure_file(cmake/switchcfg-funclist.pc.in ${PROJECT_BINARY_DIR}/switchcfg-funclist.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/switchcfg-funclist.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
