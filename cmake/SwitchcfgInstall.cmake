# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` lays down: objects, headers, the CMake package and the pkg-config files. By component, so that
# packages (cmake/SwitchcfgPackages.cmake) and parts of a firmware can be made of it: library, funclist, dev, tools, lab.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME dev)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/switchcfg)

install(TARGETS switchcfg switchcfg-equipment switchcfg-headers EXPORT switchcfg-targets
    LIBRARY COMPONENT library NAMELINK_SKIP)
configure_file(cmake/libswitchcfg.so.in ${PROJECT_BINARY_DIR}/generated/libswitchcfg.so @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/generated/libswitchcfg.so DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(funclist_headers ${SWITCHCFG_FUNCLIST_HEADERS})
list(TRANSFORM funclist_headers PREPEND "PATTERN;")
set(no_funclist_headers ${SWITCHCFG_FUNCLIST_HEADERS})
list(TRANSFORM no_funclist_headers REPLACE "(.+)" "PATTERN;\\1;EXCLUDE")
install(DIRECTORY include/switchcfg DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILES_MATCHING PATTERN "*.h" ${no_funclist_headers})
install(EXPORT switchcfg-targets NAMESPACE switchcfg:: DESTINATION ${package_dir})

configure_package_config_file(cmake/switchcfgConfig.cmake.in ${PROJECT_BINARY_DIR}/switchcfgConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/switchcfgConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/switchcfgConfig.cmake
    ${PROJECT_BINARY_DIR}/switchcfgConfigVersion.cmake
    cmake/switchcfg-where-named.cmake
    DESTINATION ${package_dir})

# The pkg-config files find their prefix from where they lie, so an installed tree can be moved.
file(RELATIVE_PATH pc_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
configure_file(cmake/switchcfg.pc.in ${PROJECT_BINARY_DIR}/switchcfg.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/switchcfg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(SWITCHCFG_BUILD_FUNCLIST)
    install(TARGETS switchcfg-funclist EXPORT switchcfg-funclist-targets
        LIBRARY COMPONENT funclist NAMELINK_COMPONENT dev)
    install(DIRECTORY include/switchcfg DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING ${funclist_headers})
    install(FILES ${SWITCHCFG_FUNCLIST_GENERATED_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/switchcfg)
    install(EXPORT switchcfg-funclist-targets NAMESPACE switchcfg:: DESTINATION ${package_dir})
    configure_file(cmake/switchcfg-funclist.pc.in ${PROJECT_BINARY_DIR}/switchcfg-funclist.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/switchcfg-funclist.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()

install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libswitchcfg-dev
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png")
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libswitchcfg-dev)
