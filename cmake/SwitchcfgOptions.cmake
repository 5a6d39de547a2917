# SPDX-License-Identifier: Apache-2.0
# What a builder can choose, and the compiler settings that hold for every target of ours.

option(SWITCHCFG_BUILD_FUNCLIST "Build libswitchcfg-funclist (needs protobuf, ZeroMQ and Boost)" ON)
option(SWITCHCFG_BUILD_TOOLS "Build switchcfg, the inspection and control command" ON)
option(SWITCHCFG_BUILD_LAB "Build switchlab, the switch on a workstation" ON)
option(SWITCHCFG_BUILD_TESTS "Build the tests (run through switchlab)" ${PROJECT_IS_TOP_LEVEL})
option(SWITCHCFG_BUILD_BENCH "Build the benchmarks" ${PROJECT_IS_TOP_LEVEL})
option(SWITCHCFG_BUILD_FUZZ "Build the fuzz programs: libFuzzer's with clang, else tests that replay their corpora" OFF)
option(SWITCHCFG_UNITY "Compile the sources of each command together: the argument parser is all header" OFF)
option(SWITCHCFG_DEBUG_INFO "Debug information in the libraries whatever the build type: the comparison of interfaces reads it" OFF)
option(SWITCHCFG_LTO "Compile libswitchcfg as one program in a release: the smallest; debug information gets vague" OFF)
option(SWITCHCFG_WERROR "Treat warnings as errors" OFF)
option(SWITCHCFG_COVERAGE "The libraries count which of their lines run" OFF)
set(SWITCHCFG_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The settings of our own code; a target takes them by linking switchcfg-settings privately.
add_library(switchcfg-settings INTERFACE)
# 64-bit file offsets and inode numbers on 32-bit machines too: otherwise stat() and open() refuse files whose numbers
# do not fit, such as those of a tmpfs or an overlay on a 64-bit inode range. No type of the interface depends on it.
target_compile_definitions(switchcfg-settings INTERFACE _GNU_SOURCE _FILE_OFFSET_BITS=64)
target_include_directories(switchcfg-settings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(switchcfg-settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Wundef -Wvla
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wextra-semi>
    $<$<BOOL:${SWITCHCFG_WERROR}>:-Werror>)
if(SWITCHCFG_SANITIZE)
    target_compile_options(switchcfg-settings INTERFACE
        -fsanitize=${SWITCHCFG_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        -Wno-maybe-uninitialized) # the instrumentation hides from the compiler what is set
    target_link_options(switchcfg-settings INTERFACE -fsanitize=${SWITCHCFG_SANITIZE})
    if(SWITCHCFG_SANITIZE MATCHES thread)
        # It does not follow fences; ours order what a process that dies leaves to the others.
        target_compile_options(switchcfg-settings INTERFACE -Wno-tsan)
    endif()
endif()

# switchcfg_command(TARGET): a program with command-line arguments. It needs no more than -O1, and of the debug information
# the lines: each halves what the compiler spends on the argument parser. Under a sanitizer so does -O0.
function(switchcfg_command target)
    target_link_libraries(${target} PRIVATE CLI11::CLI11 nlohmann_json::nlohmann_json)
    set(optimisation -O1)
    if(SWITCHCFG_SANITIZE)
        set(optimisation -O0)
    endif()
    target_compile_options(${target} PRIVATE ${optimisation} $<$<CONFIG:RelWithDebInfo>:-g1>)
    # Every file that includes the argument parser compiles it whole, ten seconds each.
    if(SWITCHCFG_UNITY)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 12)
    endif()
endfunction()
