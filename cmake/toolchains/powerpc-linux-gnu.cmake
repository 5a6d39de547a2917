# SPDX-License-Identifier: Apache-2.0
# The target: 32-bit big-endian PowerPC, with Debian's cross compiler.
#
# An integrator's own compiler and root: -DSWITCHCFG_TARGET_TRIPLET=powerpc-myvendor-linux-gnu, -DCMAKE_SYSROOT=...,
# -DCMAKE_PREFIX_PATH=... (where its zlib, ZeroMQ and so on are). scripts/target-deps makes such a place from Debian's
# sources for those who have none.
set(SWITCHCFG_TARGET_TRIPLET powerpc-linux-gnu CACHE STRING "What the names of the target's compilers begin with")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SWITCHCFG_TARGET_TRIPLET)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR powerpc)
set(CMAKE_C_COMPILER ${SWITCHCFG_TARGET_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${SWITCHCFG_TARGET_TRIPLET}-g++)

# Programs are the workstation's (protoc), all else is the target's. The workstation's pkg-config files are not.
list(APPEND CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH})
if(NOT CMAKE_SYSROOT AND EXISTS /usr/${SWITCHCFG_TARGET_TRIPLET})
    list(APPEND CMAKE_FIND_ROOT_PATH /usr/${SWITCHCFG_TARGET_TRIPLET})
endif()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# pkg-config looks in CMAKE_PREFIX_PATH, then here instead of among the workstation's own.
if(NOT DEFINED ENV{PKG_CONFIG_LIBDIR})
    set(root "${CMAKE_SYSROOT}/usr")
    if(NOT CMAKE_SYSROOT)
        set(root /usr/${SWITCHCFG_TARGET_TRIPLET})
    endif()
    set(ENV{PKG_CONFIG_LIBDIR} "${root}/lib/${SWITCHCFG_TARGET_TRIPLET}/pkgconfig:${root}/lib/pkgconfig:${root}/share/pkgconfig")
endif()

# The processor has 4 KiB pages and no others; the linker would lay segments out for 64 KiB, in a file that much larger.
string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,-z,max-page-size=4096")
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,-z,max-page-size=4096")
