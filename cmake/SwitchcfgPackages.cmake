# SPDX-License-Identifier: Apache-2.0
# Debian packages of what is installed: `cpack` in a built tree of the preset `package`, or scripts/packages.
# A daemon's machine needs libswitchcfg0, that of one that calls the switch chip libswitchcfg-funclist0 as well.

set(SWITCHCFG_MAINTAINER "libswitchcfg maintainers <libswitchcfg@packages.invalid>" CACHE STRING
    "Whom packages name as their maintainer")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME switchcfg)
set(CPACK_PACKAGE_VENDOR "libswitchcfg")
set(CPACK_PACKAGE_CONTACT "${SWITCHCFG_MAINTAINER}")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
# Manual pages, changelogs and licences as Debian has them.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package-documents.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
endif()

# switchcfg_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION)
macro(switchcfg_package component name section summary description)
    string(TOUPPER ${component} upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    # The first line of what cpack writes is the summary.
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${description}")
endmacro()

set(CPACK_COMPONENTS_ALL "")
switchcfg_package(library libswitchcfg${PROJECT_VERSION_MAJOR} libs
    "configuration and utility library of a managed Ethernet switch"
    "Every daemon of the switch links it: shared configuration and status, named
locks, equipment and port numbering, error texts, boot environment, logging,
notifications, crash reports and a toolkit. It needs libc and zlib only.")
if(SWITCHCFG_BUILD_FUNCLIST)
    switchcfg_package(funclist libswitchcfg-funclist${PROJECT_VERSION_MAJOR} libs
        "calls into the switch-chip daemon of a managed Ethernet switch"
        "Requests and replies between processes of the switch and the daemon that
drives its chips, over ZeroMQ, with messages of Protocol Buffers: both sides.")
    set(CPACK_COMPONENT_FUNCLIST_DEPENDS library)
    set(CPACK_COMPONENT_DEV_DEPENDS library funclist)
    set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS libprotobuf-dev)
else()
    set(CPACK_COMPONENT_DEV_DEPENDS library)
endif()
switchcfg_package(dev libswitchcfg-dev libdevel
    "configuration and utility library of a managed switch (development)"
    "Headers, the CMake package, pkg-config files, documents and examples for
programs that link libswitchcfg or libswitchcfg-funclist.")
if(SWITCHCFG_BUILD_TOOLS)
    switchcfg_package(tools switchcfg-tools admin
        "inspection and control command of a managed Ethernet switch"
        "switchcfg shows and sets what the daemons of a switch share, and asks and
commands them: configuration, status, equipment, ports, boot environment, logs,
notifications, processes, calls into the switch chips. With manual pages and
completion for bash and zsh.")
    set(CPACK_COMPONENT_TOOLS_DEPENDS library funclist)
endif()
if(SWITCHCFG_BUILD_LAB)
    switchcfg_package(lab switchlab devel
        "managed Ethernet switch on a workstation"
        "switchlab runs programs of the switch in a machine of their own that is made in
milliseconds: private files, network and processes, a flash device that fails
on request, stand-ins for the daemons of the switch, stacks of up to eight
units.")
    set(CPACK_COMPONENT_LAB_DEPENDS library funclist)
    set(CPACK_DEBIAN_LAB_PACKAGE_RECOMMENDS "switchcfg-tools, iproute2, snmptrapd")
endif()
if(NOT SWITCHCFG_BUILD_FUNCLIST)
    set(CPACK_COMPONENT_TOOLS_DEPENDS library)
    set(CPACK_COMPONENT_LAB_DEPENDS library)
endif()
# The loader's list of libraries follows.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_DEBIAN_FUNCLIST_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
include(CPack)
