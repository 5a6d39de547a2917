# SPDX-License-Identifier: Apache-2.0
# What the chip-daemon calls stand on: Protocol Buffers and ZeroMQ, each as a distribution packs it or as its own build
# installs it, shared or static, found through CMAKE_PREFIX_PATH and the toolchain file's root.

# The first request for a package decides: its own CMake package, else header and library.
find_package(ZeroMQ CONFIG QUIET)
if(TARGET libzmq)
    add_library(switchcfg-zeromq INTERFACE)
    target_link_libraries(switchcfg-zeromq INTERFACE libzmq)
elseif(TARGET libzmq-static)
    add_library(switchcfg-zeromq INTERFACE)
    target_link_libraries(switchcfg-zeromq INTERFACE libzmq-static)
else()
    find_path(ZEROMQ_INCLUDE_DIR zmq.h)
    find_library(ZEROMQ_LIBRARY zmq)
    if(NOT ZEROMQ_INCLUDE_DIR OR NOT ZEROMQ_LIBRARY)
        message(FATAL_ERROR "ZeroMQ is missing: install libzmq3-dev, name its prefix in CMAKE_PREFIX_PATH, or build "
            "without the chip-daemon calls (-DSWITCHCFG_BUILD_FUNCLIST=OFF)")
    endif()
    add_library(switchcfg-zeromq INTERFACE)
    target_include_directories(switchcfg-zeromq SYSTEM INTERFACE ${ZEROMQ_INCLUDE_DIR})
    target_link_libraries(switchcfg-zeromq INTERFACE ${ZEROMQ_LIBRARY})
endif()

find_package(Threads REQUIRED)
find_package(Protobuf 3.12 REQUIRED)
